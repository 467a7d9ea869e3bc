#include "state/zml_writer.h"

#include "core/z_exception.h"
#include "core/z_format.h"
#include "state/z_stream.h"

namespace halvern {
namespace {

// Bytes collected before they are handed to the stream in one Write.
constexpr size_t kFlushSize = 16384;

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

class Writer {
public:
    Writer(ZMLLayout layout, ZStream* stream) : indented_(layout == ZMLLayout::Indented), stream_(stream) {}

    void document(const ZMLElement& root, std::string_view encoding)
    {
        out_ += "<?xml version=\"1.0\" encoding=\"";
        out_ += encoding;
        out_ += "\"?>\n";
        check(root, 1);
        element(root, 1);
        if (!indented_)
            out_ += '\n';
        flush();
    }

    std::string& text() { return out_; }

private:
    // Checks the whole tree before anything is written, so that a failure leaves
    // nothing half-written in the stream.
    static void check(const ZMLElement& element, int depth)
    {
        if (depth > kZMLMaxDepth)
            throw ZException(ZFormat("Elements are nested deeper than {0} levels.").arg(kZMLMaxDepth).text());
        if (!IsZMLName(element.name()))
            throw ZException(ZFormat("Invalid element name ({0}).").arg(element.name()).text());
        for (const ZAttribute& attribute : element.attributes())
            if (!IsZMLName(attribute.name))
                throw ZException(ZFormat("Invalid attribute name ({0}).").arg(attribute.name).text());
        for (const auto& child : element.children())
            check(*child, depth + 1);
    }

    void element(const ZMLElement& element, int depth)
    {
        if (stream_ != nullptr && out_.size() >= kFlushSize)
            flush();
        indent(depth);
        out_ += '<';
        out_ += element.name();
        for (const ZAttribute& attribute : element.attributes()) {
            out_ += ' ';
            out_ += attribute.name;
            out_ += "=\"";
            escape(attribute.value, EscapeMode::Attribute);
            out_ += '"';
        }
        const bool hasChildren = !element.children().empty();
        if (element.text().empty() && !hasChildren) {
            out_ += "/>";
            endLine();
            return;
        }
        out_ += '>';
        if (hasChildren) {
            escape(element.text(), EscapeMode::TextAroundChildren);
            endLine();
            for (const auto& child : element.children())
                this->element(*child, depth + 1);
            indent(depth);
        } else {
            escape(element.text(), EscapeMode::Text);
        }
        out_ += "</";
        out_ += element.name();
        out_ += '>';
        endLine();
    }

    enum class EscapeMode { Attribute, Text, TextAroundChildren };

    void escape(std::string_view text, EscapeMode mode)
    {
        size_t first = 0;
        size_t last = text.size();
        if (mode == EscapeMode::TextAroundChildren) {
            while (first < last && isBlank(text[first]))
                ++first;
            while (last > first && isBlank(text[last - 1]))
                --last;
        }
        for (size_t i = 0; i < text.size(); ++i) {
            const char c = text[i];
            switch (c) {
            case '&': out_ += "&amp;"; continue;
            case '<': out_ += "&lt;"; continue;
            case '>': out_ += "&gt;"; continue;
            case '"': out_ += "&quot;"; continue;
            case '\'': out_ += "&apos;"; continue;
            default: break;
            }
            const auto byte = static_cast<unsigned char>(c);
            const bool literalBlank = (c == '\t' || c == '\n') && mode != EscapeMode::Attribute;
            const bool layoutBlank = i < first || i >= last;
            if ((byte < 0x20 && !literalBlank) || layoutBlank) {
                out_ += "&#";
                out_ += std::to_string(byte);
                out_ += ';';
            } else {
                out_ += c;
            }
        }
    }

    void indent(int depth)
    {
        if (indented_)
            out_.append(static_cast<size_t>(depth - 1), '\t');
    }

    void endLine()
    {
        if (indented_)
            out_ += '\n';
    }

    void flush()
    {
        if (stream_ == nullptr)
            return;
        stream_->WriteString(out_);
        out_.clear();
    }

    bool indented_;
    ZStream* stream_;
    std::string out_;
};

} // namespace

void WriteZMLDocument(ZStream& stream, const ZMLElement& root, ZMLLayout layout, std::string_view encoding)
{
    Writer writer(layout, &stream);
    writer.document(root, encoding);
}

std::string ZMLDocumentText(const ZMLElement& root, ZMLLayout layout, std::string_view encoding)
{
    Writer writer(layout, nullptr);
    writer.document(root, encoding);
    return std::move(writer.text());
}

} // namespace halvern
