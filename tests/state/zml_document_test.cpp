#include "core/z_exception.h"
#include "state/z_stream.h"
#include "state/zml_reader.h"
#include "state/zml_writer.h"
#include "tests/state/stream_test_support.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace halvern {
namespace {

using namespace std::string_literals;

const std::string kDeclaration = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";

using test::memoryOf;
using test::messageOf;

std::string readError(std::string_view document)
{
    return messageOf([&] { ReadZMLDocument(document); });
}

// Attributes out of order, characters to escape, an empty element, a text leaf, a nested list.
ZMLElement sampleState()
{
    ZMLElement root("settings");
    root.setAttribute("Version", "328448");
    root.setAttribute("Name", "Hall & \"Big\" <1>'s");
    root.setAttribute("AGC", "0");
    ZMLElement& position = root.addChild("Position");
    position.setAttribute("SourceY", "0.25");
    position.setAttribute("SourceX", "0.5");
    root.addChild("Note").setText("a<b & c>d");
    ZMLElement& lfos = root.addChild("LFOs");
    lfos.addChild("LFO").setAttribute("Mode", "1");
    lfos.addChild("LFO");
    return root;
}

// Everything the writer has to escape or lay out specially, and bytes it passes through.
ZMLElement awkwardTree()
{
    ZMLElement root("r");
    root.setText(" \t text around children \n");
    root.setAttribute("controls", "\t\n\r\x01 \x1f"s);
    root.setAttribute("empty", "");
    root.setAttribute("quotes", "\"'&<>");
    ZMLElement& leaf = root.addChild("leaf");
    leaf.setText("  line 1\n\tline 2\r\n\x7f\0end  "s);
    root.addChild("blank").setText(" \n\t ");
    ZMLElement& utf8 = root.addChild("caf\xC3\xA9");
    utf8.setAttribute("\xE2\x82\xAC", "\xF0\x9F\x8E\xB5 \xFF\xFE"); // invalid UTF-8 passes through too
    ZMLElement& same = root.addChild("leaf");
    same.addChild("leaf").addChild("leaf").setText("&amp;");
    return root;
}

} // namespace

TEST(ZMLDocumentTest, CompactAndIndentedFormsEscapeAndWriteControlBytesAndBlanksAsReferences)
{
    const std::string open = "<settings AGC=\"0\" Name=\"Hall &amp; &quot;Big&quot; &lt;1&gt;&apos;s\" Version=\"328448\">";
    EXPECT_EQ(ZMLDocumentText(sampleState(), ZMLLayout::Compact),
              kDeclaration + open + "<Position SourceX=\"0.5\" SourceY=\"0.25\"/><Note>a&lt;b &amp; c&gt;d</Note>"
                                    "<LFOs><LFO Mode=\"1\"/><LFO/></LFOs></settings>\n");
    EXPECT_EQ(ZMLDocumentText(sampleState(), ZMLLayout::Indented),
              kDeclaration + open + "\n\t<Position SourceX=\"0.5\" SourceY=\"0.25\"/>\n\t<Note>a&lt;b &amp; c&gt;d</Note>\n"
                                    "\t<LFOs>\n\t\t<LFO Mode=\"1\"/>\n\t\t<LFO/>\n\t</LFOs>\n</settings>\n");
    EXPECT_EQ(ZMLDocumentText(ZMLElement("settings"), ZMLLayout::Compact), kDeclaration + "<settings/>\n");
    EXPECT_EQ(ZMLDocumentText(ZMLElement("settings"), ZMLLayout::Indented, "UTF-8"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<settings/>\n");

    ZMLElement root("r");
    root.setAttribute("v", "a\tb\nc\rd\0e"s);
    root.setText(" x\ty\n");
    root.addChild("leaf").setText("\t1\n2\r3\x1f "s);
    EXPECT_EQ(ZMLDocumentText(root, ZMLLayout::Compact),
              kDeclaration + "<r v=\"a&#9;b&#10;c&#13;d&#0;e\">&#32;x\ty&#10;<leaf>\t1\n2&#13;3&#31; </leaf></r>\n");
}

TEST(ZMLDocumentTest, WriterRefusesTreesItCouldNotReadBackAndWritesNothing)
{
    auto writeError = [](const ZMLElement& root) {
        ZMemoryStream stream;
        const std::string message = messageOf([&] { WriteZMLDocument(stream, root, ZMLLayout::Compact); });
        EXPECT_EQ(stream.size(), 0);
        return message;
    };
    ZMLElement root("settings");
    root.addChild("Preset 1");
    EXPECT_EQ(writeError(root), "Invalid element name (Preset 1).");
    root.clear();
    root.addChild("Position").setAttribute("1x", "0");
    EXPECT_EQ(writeError(root), "Invalid attribute name (1x).");
    EXPECT_EQ(writeError(ZMLElement()), "Invalid element name ().");

    ZMLElement deep("d");
    ZMLElement* tip = &deep;
    for (int depth = 1; depth < kZMLMaxDepth; ++depth)
        tip = &tip->addChild("d");
    EXPECT_NO_THROW(ZMLDocumentText(deep, ZMLLayout::Compact));
    tip->addChild("d");
    EXPECT_EQ(writeError(deep), "Elements are nested deeper than 256 levels.");
}

TEST(ZMLDocumentTest, BothFormsReadBackToTheSameTree)
{
    for (const ZMLElement& tree : {sampleState(), awkwardTree()}) {
        for (const ZMLLayout layout : {ZMLLayout::Compact, ZMLLayout::Indented}) {
            const std::string text = ZMLDocumentText(tree, layout);
            const auto read = ReadZMLDocument(text);
            EXPECT_TRUE(*read == tree) << text;
            EXPECT_EQ(ZMLDocumentText(*read, layout), text);

            ZMemoryStream stream = memoryOf(text);
            EXPECT_TRUE(*ReadZMLDocument(stream) == tree);
        }
    }
}

TEST(ZMLDocumentTest, ReaderSkipsDeclarationCommentsAndBlanksAndDecodesReferences)
{
    const auto root = ReadZMLDocument("\xEF\xBB\xBF<?xml version='1.0'?>\r\n<!-- a <comment> -->\n"
                                      "<settings\n\tAGC = '1'\tVersion=\"2\" >\r\n"
                                      "  <!-- inside --><?pi ignored?>\n"
                                      "  <LFOs>\n\t\t<LFO Mode=\"3\" />\n\n\t</LFOs >\n"
                                      "  <Note>  kept  as  is\n</Note>\n"
                                      "</settings>\n\n<!-- after -->\t\n");
    ZMLElement expected("settings");
    expected.setAttribute("AGC", "1");
    expected.setAttribute("Version", "2");
    expected.addChild("LFOs").addChild("LFO").setAttribute("Mode", "3");
    expected.addChild("Note").setText("  kept  as  is\n");
    EXPECT_TRUE(*root == expected) << ZMLDocumentText(*root, ZMLLayout::Indented);

    // Between children blank runs vanish and other runs lose their literal blanks at either end.
    const auto mixed = ReadZMLDocument("<a>\n  one two\n  <b/>\n  &#32;three&#10;  <c/>  \n</a>");
    EXPECT_EQ(mixed->text(), "one two three\n");
    EXPECT_EQ(ReadZMLDocument("<a>  </a>")->text(), "  ");

    const auto decoded = ReadZMLDocument("<t v=\"&lt;&gt;&amp;&quot;&apos;\">"
                                      "&#65;&#x42;&#x20AC;&#x1F600;&#xe9;&#0;|<![CDATA[<&amp;>]]></t>");
    EXPECT_EQ(decoded->getAttribute("v"), "<>&\"'");
    EXPECT_EQ(decoded->text(), "AB\xE2\x82\xAC\xF0\x9F\x98\x80\xC3\xA9\0|<&amp;>"s);
}

TEST(ZMLDocumentTest, MalformedDocumentsFailWithTheirOwnMessages)
{
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"<a><b></a></b>", "Invalid closing element name."},
        {"<a/>\n tail", "Text outside of any element."}, {"&amp;<a/>", "Text outside of any element."},
        {"<a b=\"x&;\"/>", "XML entity cannot have empty name."},
        {"<a b", "Unterminated element tag."}, {"<a></a", "Unterminated element tag."},
        {"<a b=\"1/>", "Unterminated attribute value."}, {"<!-- open <a/>", "Unterminated comment."},
        {"<?xml version=\"1.0\"", "Unterminated processing instruction."},
        {"<a><![CDATA[x]]</a>", "Unterminated CDATA section."}, {"<a>& b;</a>", "Unterminated XML entity."},
        {"<a><b>", "Element (b) is not closed."}, {"<a v=\"&AMP;\"/>", "Unknown XML entity (AMP)."},
        {"<a>&#x;</a>", "Invalid character reference (#x)."},
        {"<a>&#xD800;</a>", "Invalid character reference (#xD800)."},
        {"<a>&#x110000;</a>", "Invalid character reference (#x110000)."},
        {"<a>&#99999999999999999999;</a>", "Invalid character reference (#99999999999999999999)."},
        {" \n<?xml version=\"1.0\"?>\n<!-- only -->\n", "Document has no root element."},
        {"<a/><b/>", "Document has more than one root element."},
        {"<!DOCTYPE a><a/>", "Markup declarations are not supported."},
        {"<1a/>", "Invalid element name."}, {"<a></>", "Invalid element name."},
        {"<a -b=\"1\"/>", "Invalid attribute name."}, {"<a b=\"1\"c=\"2\"/>", "Invalid character in element tag."},
        {"<a></a x>", "Invalid character in element tag."}, {"<a b/>", "Attribute (b) has no value."},
        {"<a b=1/>", "Value of attribute (b) is not quoted."}, {"<a b=\"1\" c=\"2\" b='3'/>", "Duplicate attribute (b)."},
    };
    for (const auto& [document, message] : cases)
        EXPECT_EQ(readError(document), message) << document;
}

TEST(ZMLDocumentTest, NestingAndSizeAreLimited)
{
    const auto repeat = [](std::string_view text, int times) {
        std::string repeated;
        for (int i = 0; i < times; ++i)
            repeated += text;
        return repeated;
    };
    EXPECT_NO_THROW(ReadZMLDocument(repeat("<d>", kZMLMaxDepth) + repeat("</d>", kZMLMaxDepth)));
    EXPECT_EQ(readError(repeat("<d>", kZMLMaxDepth + 1) + repeat("</d>", kZMLMaxDepth + 1)),
              "Elements are nested deeper than 256 levels.");
    EXPECT_EQ(readError(std::string(100000, '<')), "Invalid element name.");
    EXPECT_EQ(readError(repeat("<d>", 300000)), "Elements are nested deeper than 256 levels.");

    std::string large(kZMLMaxDocumentSize + 1, ' ');
    large.replace(0, 4, "<a/>");
    EXPECT_EQ(readError(large), "Document is larger than 67108864 bytes.");
    large.pop_back();
    EXPECT_NO_THROW(ReadZMLDocument(large));

    const std::string document = "<a>" + std::string(94, 'x') + "</a>"; // 101 bytes
    ZMemoryStream over = memoryOf(document);
    EXPECT_EQ(messageOf([&] { ReadZMLDocument(over, 100); }), "Document is larger than 100 bytes.");
    ZMemoryStream exact = memoryOf(document);
    EXPECT_EQ(ReadZMLDocument(exact, 101)->text().size(), 94u);
}

} // namespace halvern
