#pragma once

// The names of an enumeration as ZValueEnum shows and stores them. Each enumeration
// used with ZValueEnum specialises ZEnumNames where it is declared:
//
//   template <> struct ZEnumNames<MyMode> {
//       static std::span<const char* const> names(); // one name per enumerator, in order
//   };

#include <span>

namespace halvern {

template <class E>
struct ZEnumNames;

} // namespace halvern
