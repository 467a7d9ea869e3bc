#pragma once

// Reads a markup document into a fresh element tree and returns its root.
//
// Skipped: a UTF-8 byte order mark at the start, processing instructions <?...?> (the
// declaration among them), comments <!--...-->, and blanks (space, TAB, LF, CR)
// outside the root element. Unescaped: &lt; &gt; &amp; &quot; &apos; and decimal or
// hexadecimal character references (&#N; &#xN;, written out as UTF-8; &#0; gives a
// zero byte). CDATA sections are taken as literal text. Other bytes, including any
// byte of 0x80 and above, pass through unchanged.
//
// Text: a leaf element keeps its character data exactly. In an element with children
// the literal blanks at both ends of each run of character data are layout and are
// dropped (so blank runs between child elements vanish); the rest of each run,
// references included, is concatenated into the element's text.
//
// Every fault throws ZException with a one-sentence message; the messages are listed at
// the top of the .cpp. A repeated attribute name in one tag is an error. Nesting is
// limited to kZMLMaxDepth and the document to kZMLMaxDocumentSize bytes; the parser is
// iterative and its time and memory grow linearly with the input size.

#include "state/zml_element.h"

#include <cstddef>
#include <memory>
#include <string_view>

namespace halvern {

class ZStream;

constexpr size_t kZMLMaxDocumentSize = size_t{64} << 20;

std::unique_ptr<ZMLElement> ReadZMLDocument(std::string_view document);

// Reads the stream up to its end (a Read that delivers fewer bytes than asked) and
// parses what it read; throws when the stream holds more than
// min(sizeLimit, kZMLMaxDocumentSize) bytes.
std::unique_ptr<ZMLElement> ReadZMLDocument(ZStream& stream, size_t sizeLimit = kZMLMaxDocumentSize);

} // namespace halvern
