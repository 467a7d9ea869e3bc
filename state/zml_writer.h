#pragma once

// Writes an element tree as a complete markup document: the declaration
// <?xml version="1.0" encoding="..."?>, a line feed, then the root element.
//
// Compact layout: the whole root element on one line, ended by one line feed.
// Indented layout: every element on its own line, indented by one TAB per depth (the
// root at none); a leaf element's text stays on its line; an element with children
// writes its text behind its opening tag and its closing tag on a line of its own.
// Lines end with a line feed only.
//
// Escaping: & < > " ' are always written as &amp; &lt; &gt; &quot; &apos;. Bytes 0-31
// are written as decimal references &#N; except TAB and LF in text. In an element that
// has children, the text's leading and trailing blanks are written as references too,
// because the reader treats literal blanks around character data between child
// elements as layout. Other bytes, UTF-8 sequences included, pass through unchanged.
//
// Throws ZException for names the reader would not accept ("Invalid element name
// ({0})." / "Invalid attribute name ({0}).") and for trees nested deeper than
// kZMLMaxDepth, so that whatever is written can be read back.

#include "state/zml_element.h"

#include <string>
#include <string_view>

namespace halvern {

class ZStream;

enum class ZMLLayout { Compact, Indented };

void WriteZMLDocument(ZStream& stream, const ZMLElement& root, ZMLLayout layout,
                      std::string_view encoding = "utf-8");

// The same document as a string.
std::string ZMLDocumentText(const ZMLElement& root, ZMLLayout layout, std::string_view encoding = "utf-8");

} // namespace halvern
