#pragma once

// Reads help texts written in the editor's small markup:
//   <p> starts a paragraph, <br> breaks the line;
//   <name>…</name> names the described thing, <b>, <i>, <reference>…</reference>;
//   <control>NAME</control> a control's name; <img src="name" alt="text"/>;
//   <table><tr><td>…</td></tr></table>;
//   the entities &amp; &lt; &gt; &quot; &apos; &nbsp; &#NN; &#xHH;.
// The reader never fails: unknown tags are dropped with their text kept, tags left open
// are closed at the end, a '<' that starts no tag is text, invalid UTF-8 becomes U+FFFD.
// White space collapses to single spaces as in HTML. Its work is bounded: input beyond
// kMaxMarkupBytes is ignored, styles nest at most kMaxMarkupNesting deep (deeper tags are
// dropped), a table has at most kMaxMarkupColumns columns (further cells continue the
// last one) and tables do not nest.

#include "ui/markup/markup_document.h"

#include <cstddef>
#include <string_view>

namespace halvern {

inline constexpr size_t kMaxMarkupBytes = 64 * 1024;
inline constexpr size_t kMaxMarkupNesting = 32;
inline constexpr size_t kMaxMarkupColumns = 16;

ZMarkupDocument ParseMarkup(std::string_view markup);

} // namespace halvern
