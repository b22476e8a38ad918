#include "ui/popup.h"

#include "ui/pixel_canvas.h"
#include "ui/theme.h"

#include <FL/Fl.H>
#include <FL/Fl_Image.H>
#include <FL/Fl_Menu_Item.H>
#include <FL/Fl_Multi_Label.H>

#include <deque>
#include <string>
#include <vector>

namespace sonorelle {

namespace {

// Owns all that the entries of the toolkit's menu point to.
class MenuItems {
public:
    explicit MenuItems(const PopupMenu& menu)
        : on(MarkPicture(kVoiceColours[3])), off(MarkPicture(kVoiceColours[1])) {
        Add(menu.items);
        FillPictures();
    }

    std::int32_t Run() {
        if (items.size() < 2) return PopupItem::kNothing;
        const Fl_Menu_Item* chosen = items.front().popup(Fl::event_x(), Fl::event_y());
        return chosen != nullptr ? static_cast<std::int32_t>(chosen->argument()) : PopupItem::kNothing;
    }

private:
    static CPixelCanvas MarkPicture(Colour colour) {
        CPixelCanvas canvas(kMarkSize, kMarkSize, kPanelColour);
        canvas.FillRoundedBox({1, 1, kMarkSize - 2, kMarkSize - 2}, 4, LerpColour(colour, kWhite, 0.35F),
                              colour);
        canvas.StrokeRoundedBox({1, 1, kMarkSize - 2, kMarkSize - 2}, 4, 1, LerpColour(colour, kBlack, 0.3F));
        return canvas;
    }

    void Add(const std::vector<PopupItem>& entries) {
        for (const PopupItem& entry : entries) {
            texts.push_back(Escaped(entry.text));
            Fl_Menu_Item item{};
            item.text = texts.back().c_str();
            item.flags =
                (entry.children.empty() ? 0 : FL_SUBMENU) | (entry.separatorBehind ? FL_MENU_DIVIDER : 0);
            item.user_data_ = reinterpret_cast<void*>(static_cast<std::intptr_t>(entry.id));
            item.labelfont_ = FL_HELVETICA;
            item.labelsize_ = kLabelSize;
            items.push_back(item);
            marks.push_back(entry.mark);
            if (!entry.children.empty()) Add(entry.children);
        }
        items.emplace_back(Fl_Menu_Item{}); // the end of the level
        marks.push_back(PopupMark::kNone);
    }

    // When no entry moves any more.
    void FillPictures() {
        for (std::size_t i = 0; i < items.size(); ++i) {
            if (marks[i] == PopupMark::kNone) continue;
            const CPixelCanvas& picture = marks[i] == PopupMark::kOn ? on : off;
            images.emplace_back(picture.Data(), kMarkSize, kMarkSize);
            const char* text = items[i].text;
            items[i].image(images.back()); // makes the toolkit know labels of this type, too
            if (text[0] != '\0') {
                Fl_Multi_Label label{};
                label.labela = reinterpret_cast<const char*>(&images.back());
                label.typea = _FL_IMAGE_LABEL;
                label.labelb = text;
                label.typeb = FL_NORMAL_LABEL;
                labels.push_back(label);
                labels.back().label(&items[i]);
            }
        }
    }

    // Signs that the toolkit takes for more than themselves.
    static std::string Escaped(const std::string& text) {
        std::string escaped;
        for (const char sign : text) escaped.append(sign == '@' || sign == '&' ? 2 : 1, sign);
        return escaped;
    }

    const CPixelCanvas on;
    const CPixelCanvas off;
    std::deque<std::string> texts; // these three never move what they hold
    std::deque<Fl_RGB_Image> images;
    std::deque<Fl_Multi_Label> labels;
    std::vector<Fl_Menu_Item> items;
    std::vector<PopupMark> marks;
};

} // namespace

std::int32_t RunPopup(const PopupMenu& menu) { return MenuItems(menu).Run(); }

} // namespace sonorelle
