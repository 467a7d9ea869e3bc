#pragma once

// The formatting engine shared by the whole framework. A format string holds literal
// text and numbered argument placeholders in braces, for example "{+0.2} dB",
// "{0;.2}" or "{0:04}-{1:02}-{2:02}". The same format strings parse typed text back
// into argument texts (ZScanFormat).
//
// Inside braces: the argument index (at most three digits), then options up to '}':
//   ' 'N  pad with spaces to width N        '0'N  pad with zeros to width N
//   '+'   plus sign for positive values     '.'N  N decimals (default 4)
//   'x'   hexadecimal integers              anything else (';', ':') is ignored
// "{{" is a literal '{'; a '}' outside a placeholder is dropped and the character
// after it is taken literally, so "}}" is a literal '}'.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace halvern {

// The options of one argument placeholder.
struct ZFormatArgument {
    int index = 0;
    bool hexadecimal = false;
    bool plusSign = false;
    uint8_t width = 0; // 0 = no padding
    char pad = ' ';
    uint8_t decimals = 4;
};

class ZFormat {
public:
    static constexpr int kMaxArguments = 32;

    // Parses the template; throws ZException when the string ends inside a
    // placeholder or refers to an argument index of kMaxArguments or more.
    explicit ZFormat(std::string_view format);

    // Each call supplies the next argument index, in order, to every reference of it.
    ZFormat& arg(int32_t value);
    ZFormat& arg(int64_t value);
    ZFormat& arg(double value);
    ZFormat& arg(std::string_view value);
    ZFormat& arg(const char* value) { return arg(std::string_view(value)); }

    // The template with every supplied argument inserted; missing arguments are empty.
    std::string text() const;

private:
    // One occurrence of an argument in the format string; an index may occur twice.
    struct Reference {
        ZFormatArgument options;
        size_t position; // insertion point in template_
        std::string text;
    };

    template <class FormatOne>
    ZFormat& fill(FormatOne formatOne);

    std::string template_;
    std::vector<Reference> references_;
    int nextArgument_ = 0;
};

// Walks the format string and the typed input together and collects the text of
// every argument, indexed by argument number (unseen arguments stay empty). Returns
// false when a literal character of the format does not match the input. Whitespace
// in the format matches any run of input whitespace, including none; an argument's
// text runs up to the literal that follows it in the format, or up to whitespace.
bool ZScanFormat(std::string_view format, std::string_view input, std::vector<std::string>& argumentTexts);

// Reads a decimal floating-point number at the start of text (after whitespace and an
// optional '+'); trailing text is ignored, or handed back in rest with its surrounding
// whitespace removed. Independent of the C locale. Leaves value untouched and returns
// false when there is no finite number.
bool ZParseNumber(std::string_view text, double& value, std::string_view* rest = nullptr);

// The index that text gives as a whole decimal number from 0 to count - 1 (whitespace
// around it allowed), or -1.
int ZDecimalIndex(std::string_view text, int count);

// The text without the whitespace around it.
std::string_view ZTrimmed(std::string_view text);
// True when both texts are equal with ASCII case ignored.
bool ZEqualsIgnoringCase(std::string_view a, std::string_view b);

// The number in fixed-point notation with the given decimals, like printf's "%.*f"
// but independent of the C locale.
std::string ZFormatFixed(double value, int decimals);

// A frequency in Hz as shown to the user, with a precision that depends on |hz|:
// "0 Hz", "0.1234 Hz", "1.23 Hz", "12.3 Hz", "123 Hz", "12.3 kHz".
std::string FormatFrequency(double hz);

} // namespace halvern
