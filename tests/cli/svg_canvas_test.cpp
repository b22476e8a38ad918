#include "cli/svg_canvas.h"

#include "cli/xml_check.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>

namespace sonorelle {
namespace {

using test::XmlFault;

// What one call adds to an empty picture.
template<class Draw>
std::string Drawn(Draw draw) {
    const std::string empty = SvgCanvas(10, 10, "t").Finish();
    SvgCanvas canvas(10, 10, "t");
    draw(canvas);
    const std::string text = std::move(canvas).Finish();
    EXPECT_EQ(XmlFault(text), "") << text;
    const std::string end = "</svg>\n";
    return text.substr(empty.size() - end.size(), text.size() - empty.size());
}

TEST(SvgCanvas, AnEmptyPictureIsADocument) {
    const std::string text = SvgCanvas(200, 100.5, "A & B").Finish();
    EXPECT_EQ(XmlFault(text), "");
    EXPECT_NE(text.find("width=\"200\" height=\"100.5\" viewBox=\"0 0 200 100.5\""), std::string::npos)
        << text;
    EXPECT_NE(text.find("<title>A &amp; B</title>"), std::string::npos);
}

TEST(SvgCanvas, DrawsShapes) {
    EXPECT_EQ(Drawn([](SvgCanvas& c) {
                  c.Rectangle({1, 2.25, 3, 4.126}, {.fill = kWhite});
              }),
              "<rect x=\"1\" y=\"2.25\" width=\"3\" height=\"4.13\" fill=\"#ffffff\"/>\n");
    EXPECT_EQ(
        Drawn([](SvgCanvas& c) {
            c.Rectangle({0, 0, 1, 1}, {.outline = kBlack, .outlineWidth = 1.5, .cornerRadius = 2}, "tip <1>");
        }),
        "<rect x=\"0\" y=\"0\" width=\"1\" height=\"1\" rx=\"2\" fill=\"none\" stroke=\"#000000\" "
        "stroke-width=\"1.5\">"
        "<title>tip &lt;1&gt;</title></rect>\n");
    EXPECT_EQ(Drawn([](SvgCanvas& c) {
                  c.Line({0, 1}, {2, 3}, {ColourFromRgb(0x123456), 2});
              }),
              "<line x1=\"0\" y1=\"1\" x2=\"2\" y2=\"3\" stroke=\"#123456\" stroke-width=\"2\"/>\n");
    const Point triangle[] = {{0, 0}, {1, 0}, {0.5, 1}};
    EXPECT_EQ(Drawn([&](SvgCanvas& c) { c.Polygon(triangle, kBlack); }),
              "<polygon fill=\"#000000\" points=\"0,0 1,0 0.5,1\"/>\n");
}

TEST(SvgCanvas, ALineOfOnePointIsADotAndOneOfNoneNothing) {
    const Point point[] = {{3, 4}};
    EXPECT_NE(Drawn([&](SvgCanvas& c) { c.Polyline(point, {}); }).find("points=\"3,4 3,4\""),
              std::string::npos);
    EXPECT_EQ(Drawn([](SvgCanvas& c) { c.Polyline({}, {}); }), "");
    EXPECT_EQ(Drawn([](SvgCanvas& c) { c.Polygon({}, kBlack); }), "");
}

TEST(SvgCanvas, TextIsEscapedAndStyled) {
    EXPECT_EQ(
        Drawn([](SvgCanvas& c) {
            c.Text({1, 2}, "<\"Für\" & 'Elise'>",
                   {.size = 9, .colour = kBlack, .anchor = TextAnchor::kEnd, .bold = true});
        }),
        "<text x=\"1\" y=\"2\" font-size=\"9\" fill=\"#000000\" text-anchor=\"end\" font-weight=\"bold\">"
        "&lt;&quot;Für&quot; &amp; &#39;Elise&#39;&gt;</text>\n");
    EXPECT_NE(Drawn([](SvgCanvas& c) {
                  c.Text({1, 2}, "x", {.halo = kWhite});
              }).find("paint-order=\"stroke\""),
              std::string::npos);
}

TEST(SvgCanvas, EachClipHasANameOfItsOwn) {
    const std::string text = Drawn([](SvgCanvas& c) {
        c.BeginClip({0, 0, 1, 1});
        c.EndClip();
        c.BeginClip({0, 0, 2, 2});
        c.EndClip();
    });
    EXPECT_NE(text.find("clip-path=\"url(#clip1)\""), std::string::npos);
    EXPECT_NE(text.find("clip-path=\"url(#clip2)\""), std::string::npos);
}

TEST(SvgCanvas, NumbersThatAreNoneStayWithinThePicture) {
    const std::string text = Drawn([](SvgCanvas& c) {
        c.Line({std::nan(""), std::numeric_limits<double>::infinity()}, {-1e300, -0.0001}, {});
        c.Rectangle({0, 0, -5, std::nan("")}, {});
    });
    EXPECT_NE(text.find("x1=\"0\" y1=\"1000000\" x2=\"-1000000\" y2=\"0\""), std::string::npos) << text;
    EXPECT_NE(text.find("width=\"0\" height=\"0\""), std::string::npos) << text;
}

TEST(SvgCanvas, NumbersHaveAPointInEveryLocale) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    std::setlocale(LC_ALL, "de_DE.UTF-8"); // where the machine has it
    EXPECT_NE(Drawn([](SvgCanvas& c) {
                  c.Line({0.5, 0}, {0, 0}, {});
              }).find("x1=\"0.5\""),
              std::string::npos);
    std::setlocale(LC_ALL, before.c_str());
}

TEST(EscapeXml, LeavesOutWhatXmlCannotCarry) {
    EXPECT_EQ(EscapeXml(std::string("a\0\x01\x1b\x7f z", 7)), "a z");
    EXPECT_EQ(EscapeXml("a\nb\tc"), "a b c");
    EXPECT_EQ(EscapeXml("\xef\xbf\xbe|\xef\xbf\xbf|\xc2\x85|\xe2\x80\xae"), "|||");
    EXPECT_EQ(EscapeXml("caf\xe9"), "caf\xef\xbf\xbd");
}

TEST(XmlFault, FindsWhatItShould) {
    EXPECT_EQ(XmlFault("<a b=\"1\"><c/>x &amp; y</a>\n"), "");
    for (const char* bad :
         {"", "<a>", "<a></b>", "<a b=1/>", "<a b=\"1\" b=\"2\"/>", "<a>&</a>", "<a>&bad;</a>",
          "<a b=\"<\"/>", "<a/><b/>", "<a>\x01</a>", "<a>\xff</a>", "x<a/>", "<a b=\"1/>"}) {
        EXPECT_NE(XmlFault(bad), "") << bad;
    }
}

} // namespace
} // namespace sonorelle
