#include "core/z_value_enum.h"

#include <functional>

namespace halvern {

ZNameIndex::ZNameIndex(std::span<const char* const> names)
    : names_(names), bucketHeads_(names.size(), -1), chain_(names.size(), -1)
{
    // Entries are pushed onto the front of their chain from the last to the first, so
    // that a chain lists its names in table order.
    for (size_t i = names.size(); i-- > 0;) {
        const size_t bucket = bucketOf(names[i]);
        chain_[i] = bucketHeads_[bucket];
        bucketHeads_[bucket] = static_cast<int>(i);
    }
}

int ZNameIndex::find(std::string_view text) const
{
    if (names_.empty())
        return -1;
    for (int entry = bucketHeads_[bucketOf(text)]; entry >= 0; entry = chain_[static_cast<size_t>(entry)]) {
        if (text == names_[static_cast<size_t>(entry)])
            return entry;
    }
    return -1;
}

size_t ZNameIndex::bucketOf(std::string_view text) const
{
    return std::hash<std::string_view>{}(text) % names_.size();
}

} // namespace halvern
