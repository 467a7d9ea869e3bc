#pragma once

// Forward declarations of the markup element, for headers that only pass elements by
// reference or pointer.

#include <vector>

namespace halvern {

struct ZAttribute;

template <class T>
using ZList = std::vector<T>;

template <class Attribute, class AttributeList>
class ZMLParser;

using ZMLElement = ZMLParser<ZAttribute, ZList<ZAttribute>>;

} // namespace halvern
