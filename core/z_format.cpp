#include "core/z_format.h"

#include "core/z_exception.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>

namespace halvern {

namespace {

bool isWhitespace(char c)
{
    return static_cast<unsigned char>(c) <= ' ';
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// One piece of a format string: a literal character or an argument placeholder.
struct FormatPiece {
    bool isArgument = false;
    char literal = 0;
    ZFormatArgument argument;
};

// Splits a format string into pieces; building a template and scanning input both
// walk a format string through it, so the two always agree on the syntax.
class FormatReader {
public:
    explicit FormatReader(std::string_view format) : format_(format) {}

    // The next piece; false at the end of the format string.
    bool next(FormatPiece& piece)
    {
        if (atEnd())
            return false;
        const char c = format_[position_++];
        if (c == '{' && !atEnd() && format_[position_] == '{') {
            ++position_;
            piece = {false, '{', {}};
        } else if (c == '{') {
            piece = {true, 0, readArgument()};
        } else if (c == '}') {
            // A stray '}' is dropped; the character after it counts as a literal.
            if (atEnd())
                return false;
            piece = {false, format_[position_++], {}};
        } else {
            piece = {false, c, {}};
        }
        return true;
    }

private:
    bool atEnd() const { return position_ >= format_.size(); }

    int readNumber(int maxDigits)
    {
        int number = 0;
        for (int i = 0; i < maxDigits && !atEnd() && isDigit(format_[position_]); ++i)
            number = number * 10 + (format_[position_++] - '0');
        return number;
    }

    ZFormatArgument readArgument()
    {
        ZFormatArgument argument;
        argument.index = readNumber(3);
        if (argument.index >= ZFormat::kMaxArguments)
            throw ZException("Formatting string refers to an argument above 31.");
        for (;;) {
            if (atEnd())
                throw ZException("Formatting string ends in an argument specification.");
            switch (format_[position_++]) {
            case '}':
                return argument;
            case ' ':
                argument.pad = ' ';
                argument.width = static_cast<uint8_t>(readNumber(2));
                break;
            case '0':
                argument.pad = '0';
                argument.width = static_cast<uint8_t>(readNumber(2));
                break;
            case '+':
                argument.plusSign = true;
                break;
            case '.':
                argument.decimals = static_cast<uint8_t>(readNumber(2));
                break;
            case 'x':
                argument.hexadecimal = true;
                break;
            default:
                break; // separators such as ';' or ':'
            }
        }
    }

    std::string_view format_;
    size_t position_ = 0;
};

std::string formatInteger(int64_t value, const ZFormatArgument& options)
{
    // The magnitude as unsigned, so that the lowest 64-bit value has one too.
    const uint64_t magnitude = value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
    char digits[24];
    const auto result = std::to_chars(digits, digits + sizeof digits, magnitude, options.hexadecimal ? 16 : 10);
    const std::string_view digitText(digits, static_cast<size_t>(result.ptr - digits));

    std::string text;
    if (value < 0)
        text += '-';
    else if (options.plusSign && value > 0)
        text += '+';
    if (digitText.size() < options.width)
        text.append(options.width - digitText.size(), options.pad);
    text += digitText;
    return text;
}

std::string formatGeneral(double value, int significantDigits)
{
    char buffer[512];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, significantDigits);
    return std::string(buffer, result.ptr);
}

std::string formatDouble(double value, const ZFormatArgument& options)
{
    // Zero and values up to 1e-20 get no plus sign.
    const std::string sign = options.plusSign && value - 1e-20 > 0 ? "+" : "";
    if (options.decimals < 10)
        return sign + ZFormatFixed(value, options.decimals);
    return sign + formatGeneral(value, options.decimals);
}

// The end of an argument's text in the input: the next occurrence of the literal that
// follows the argument in the format, or else the next whitespace. Arguments right after
// it are passed over: side by side, the first takes the text up to the literal after
// them all, so "{0}{1} ({2+} cents)" reads "C#4 (+12 cents)".
size_t argumentTextEnd(FormatReader following, std::string_view input, size_t start)
{
    FormatPiece piece;
    bool more = following.next(piece);
    while (more && piece.isArgument)
        more = following.next(piece);
    if (more && !isWhitespace(piece.literal))
        return std::min(input.find(piece.literal, start), input.size());
    size_t end = start;
    while (end < input.size() && !isWhitespace(input[end]))
        ++end;
    return end;
}

} // namespace

ZFormat::ZFormat(std::string_view format)
{
    FormatReader reader(format);
    FormatPiece piece;
    while (reader.next(piece)) {
        if (piece.isArgument)
            references_.push_back({piece.argument, template_.size(), {}});
        else
            template_ += piece.literal;
    }
}

template <class FormatOne>
ZFormat& ZFormat::fill(FormatOne formatOne)
{
    for (Reference& reference : references_) {
        if (reference.options.index == nextArgument_)
            reference.text = formatOne(reference.options);
    }
    ++nextArgument_;
    return *this;
}

ZFormat& ZFormat::arg(int32_t value)
{
    return arg(static_cast<int64_t>(value));
}

ZFormat& ZFormat::arg(int64_t value)
{
    return fill([value](const ZFormatArgument& options) { return formatInteger(value, options); });
}

ZFormat& ZFormat::arg(double value)
{
    return fill([value](const ZFormatArgument& options) { return formatDouble(value, options); });
}

ZFormat& ZFormat::arg(std::string_view value)
{
    return fill([value](const ZFormatArgument&) { return std::string(value); });
}

std::string ZFormat::text() const
{
    // References are kept in template order, so the output is built in one pass.
    std::string output;
    size_t copied = 0;
    for (const Reference& reference : references_) {
        output.append(template_, copied, reference.position - copied);
        output += reference.text;
        copied = reference.position;
    }
    output.append(template_, copied);
    return output;
}

bool ZScanFormat(std::string_view format, std::string_view input, std::vector<std::string>& argumentTexts)
{
    argumentTexts.clear();
    FormatReader reader(format);
    FormatPiece piece;
    size_t at = 0;
    const auto skipWhitespace = [&] {
        while (at < input.size() && isWhitespace(input[at]))
            ++at;
    };

    bool afterArgument = false;
    while (at < input.size() && reader.next(piece)) {
        const bool besideArgument = afterArgument && piece.isArgument;
        afterArgument = piece.isArgument;
        if (!besideArgument)
            skipWhitespace();
        if (at == input.size())
            break;
        if (!piece.isArgument) {
            if (isWhitespace(piece.literal))
                continue;
            if (input[at] != piece.literal)
                return false;
            ++at;
            continue;
        }
        // An argument right after another gets what the first left: nothing.
        const size_t end = besideArgument ? at : argumentTextEnd(reader, input, at);
        const auto index = static_cast<size_t>(piece.argument.index);
        if (argumentTexts.size() <= index)
            argumentTexts.resize(index + 1);
        argumentTexts[index] = std::string(input.substr(at, end - at));
        at = end;
    }
    return true;
}

bool ZParseNumber(std::string_view text, double& value, std::string_view* rest)
{
    size_t start = 0;
    while (start < text.size() && isWhitespace(text[start]))
        ++start;
    if (start < text.size() && text[start] == '+')
        ++start;
    const char* first = text.data() + start;
    double number = 0;
    const auto result = std::from_chars(first, text.data() + text.size(), number);
    // "nan" and "inf" are not accepted: they would pass through any range clamping.
    if (result.ec != std::errc() || !std::isfinite(number))
        return false;
    value = number;
    if (rest != nullptr)
        *rest = ZTrimmed(std::string_view(result.ptr, static_cast<size_t>(text.data() + text.size() - result.ptr)));
    return true;
}

int ZDecimalIndex(std::string_view text, int count)
{
    const std::string_view digits = ZTrimmed(text);
    int index = -1;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), index);
    if (digits.empty() || result.ec != std::errc() || result.ptr != digits.data() + digits.size())
        return -1;
    return index >= 0 && index < count ? index : -1;
}

std::string_view ZTrimmed(std::string_view text)
{
    while (!text.empty() && isWhitespace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isWhitespace(text.back()))
        text.remove_suffix(1);
    return text;
}

bool ZEqualsIgnoringCase(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
           });
}

std::string ZFormatFixed(double value, int decimals)
{
    // Room for the 309 integer digits of the largest double, sign, point and decimals.
    std::string text(320 + static_cast<size_t>(std::max(decimals, 0)), '\0');
    const auto result = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, decimals);
    text.resize(static_cast<size_t>(result.ptr - text.data()));
    return text;
}

std::string FormatFrequency(double hz)
{
    const double magnitude = std::fabs(hz);
    if (magnitude < 0.00001)
        return "0 Hz";
    if (magnitude < 1)
        return ZFormat("{0;.4} Hz").arg(hz).text();
    if (magnitude < 10)
        return ZFormat("{0;.2} Hz").arg(hz).text();
    if (magnitude < 100)
        return ZFormat("{0;.1} Hz").arg(hz).text();
    if (magnitude < 10000)
        return ZFormat("{0} Hz").arg(static_cast<int32_t>(std::floor(hz + 0.5))).text();
    return ZFormat("{0;.1} kHz").arg(hz * 0.001).text();
}

} // namespace halvern
