#pragma once

// The lexical level of the help-text markup: tags, comments and entities. Everything
// here is forgiving: what is not well-formed markup is reported as "not markup", and the
// caller keeps it as text.

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace halvern {

struct ZMarkupTag {
    enum class Kind {
        Open,    // <name attr="value"> or <name/>
        Close,   // </name>
        Ignored, // a comment, a declaration or a processing instruction
    };
    Kind kind = Kind::Ignored;
    std::string name; // in lower case
    bool selfClosing = false;
    // Names in lower case, values with their entities decoded and spaces collapsed.
    std::vector<std::pair<std::string, std::string>> attributes;

    // The value of an attribute; empty when the tag has none of that name.
    std::string attribute(std::string_view attributeName) const;
};

// A tag longer than this is not taken as one: it bounds the work a stray '<' can cause.
inline constexpr size_t kMaxMarkupTagBytes = 512;

// Reads the markup that starts with the '<' at start into tag. Answers the offset just
// after it, or std::string_view::npos when that '<' begins no markup.
size_t ReadMarkupTag(std::string_view text, size_t start, ZMarkupTag& tag);

// Decodes the entity that starts with the '&' at start (&amp; &lt; &gt; &quot; &apos;
// &nbsp; &#NN; &#xHH;) into codePoint. Answers the number of bytes it takes, or 0 when
// there is no entity there. A number that is no Unicode scalar value gives U+FFFD.
size_t DecodeMarkupEntity(std::string_view text, size_t start, char32_t& codePoint);

// ASCII white space and control characters separate words; runs of them collapse to one
// space.
inline bool IsMarkupSpace(char32_t c)
{
    return c <= 0x20 || c == 0x7F;
}

} // namespace halvern
