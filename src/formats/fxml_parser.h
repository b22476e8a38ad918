// A non-validating XML reader: it walks through a text once, front to back, and tells a derived class what it
// meets. There is no tree, no document type, and no entity but the character reference.
//
// A text comes from a host's project file and may be anything. Whatever it holds, the walk takes time in
// proportion to its length, reads nothing outside it, and keeps less memory than a few times its length:
// elements within elements are kept on a list, not on the call stack. One thread at a time; throws
// std::bad_alloc alone.

#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace sonorelle {

struct XmlAttribute {
    std::string_view name;  // a piece of the parsed text
    std::string_view value; // references resolved, ends at its first zero byte; valid during the call alone
};

class FxmlParser {
public:
    // Room, in bytes, for the names and values of one tag, or for one text. What is longer cannot be read.
    static constexpr std::int32_t kScratchSize = 32768;
    static constexpr std::size_t kMaxAttributes = 64; // of one element

    // The text is not copied: it stays unchanged as long as the parser reads it. A length of 0 with a text
    // means up to the terminating zero byte; a negative length, or no text, counts as an empty text.
    FxmlParser(const char* documentText, std::int64_t length);
    virtual ~FxmlParser() = default;
    FxmlParser(const FxmlParser&) = delete;
    FxmlParser& operator=(const FxmlParser&) = delete;

    // Reads from the present position until the element `endTag` is closed, or to the end of the text when
    // `endTag` is empty. A zero byte within the text counts as its end.
    //
    // True when the element was closed, or the text ended where that is allowed. False after a failure (see
    // GetErrorText), when the text ends inside an element, and when a handler stopped this level. A failure
    // ends all levels at once.
    //
    // A quirk: a text too long or with a broken reference ends a parse without `endTag` as if the text ended
    // there, with true.
    bool Parse(std::string_view endTag = {});

    // The message of the last failure, or null. Nobody is shown it; it helps to find out why a key is
    // missing.
    const char* GetErrorText() const { return errorText; }

    // See kScratchSize. Who expects one long value raises it and puts it back. Memory is taken only for what
    // is there, however large this is; below 0 counts as 0.
    void SetScratchSize(std::int32_t bytes) { scratchSize = bytes < 0 ? 0 : bytes; }
    std::int32_t GetScratchSize() const { return scratchSize; }

protected:
    // What was met. Of those that answer, false ends the level that is being read: the one above goes on.
    // OnCharData gets texts with their leading white space, but none that is white space alone.
    virtual bool OnCharData(std::string_view /*text*/) { return true; }
    virtual void OnProcessingInstruction(std::string_view /*text*/) {}
    virtual void OnComment(std::string_view /*text*/) {}
    virtual bool OnStartElement(std::string_view /*name*/, bool /*isEmpty*/,
                                std::span<const XmlAttribute> /*attributes*/) {
        return true;
    }

    // For OnStartElement: what follows is read as a level of its own that the end tag `endTag` closes. When
    // OnStartElement then answers true, the present level goes on behind it, else it ends together with it.
    // The name must stay valid, as those do that OnStartElement gets.
    void Descend(std::string_view endTag) { descent = endTag; }

    void Rewind() { MoveTo(text.data()); }
    void MoveTo(const char* place);
    std::int32_t NextChar();

    static bool IsNameByte(std::int32_t byte); // also of a byte that is not sign extended

    std::string_view text;
    const char* textEnd = nullptr;
    const char* cursor = nullptr;
    std::int32_t current = 0; // the byte at the cursor, sign extended; 0 at the end

private:
    enum class Step {
        kGoOn,
        kClosed,    // the level's own end tag
        kStopped,   // a handler wants no more of this level
        kEndOfText, // or a text that cannot be read
        kFailed
    };
    enum class TextEnd { kReached, kFull, kBadToken };

    Step ReadNext();
    Step ReadMarkup();
    Step ReadComment();
    Step ReadProcessingInstruction();
    Step ReadEndTag();
    Step ReadStartTag();
    Step Enter(bool goesOnBehind);
    bool ReadAttributes();
    bool ReadAttribute();
    bool ReadName(std::string_view& name);
    bool ReadAttributeValue();
    bool ReadCharData();
    bool ReadUpTo(std::string_view closing, const char* tooLong, const char* notClosed,
                  std::string_view& passed);

    TextEnd TakeText(char mark);
    bool AtTextEnd(char mark) const;
    bool TakeReference();
    void Take(const char* end);
    void Put(char byte);
    void ClearScratch();
    std::int64_t Room() const;

    void SkipWhiteSpace();
    bool StartsWith(std::string_view bytes) const;
    bool Fail(const char* message);

    std::int32_t scratchSize = kScratchSize;
    std::int64_t scratchUsed = 0; // names and texts of the present tag, each with one byte for its end
    std::string scratch;          // its texts, end to end
    std::vector<XmlAttribute> tagAttributes; // of the present start tag
    std::vector<std::size_t> valueStarts;    // in `scratch`, one an attribute
    std::vector<std::string_view> levels;    // end tags of the elements that are being read, outermost first
    bool outermostStopped = false;           // the outermost level ends with the one that stands in its place
    std::string_view descent;
    const char* errorText = nullptr;
};

} // namespace sonorelle
