#pragma once

// A value that selects one of the fixed names of an enumeration E. The owner's
// variable is a 32-bit index; display and storage text are the selected name. The
// names come from ZEnumNames<E>, so any enumeration that specialises it can be used.

#include "core/z_enum_names.h"
#include "core/z_format.h"
#include "core/z_saturating_cast.h"
#include "core/z_value.h"
#include "state/zml_element.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace halvern {

// Finds a name's index in a fixed name table: a hash table with one bucket per name
// and the entries of a bucket chained.
class ZNameIndex {
public:
    explicit ZNameIndex(std::span<const char* const> names);

    // The index of the name equal to text, or -1.
    int find(std::string_view text) const;

private:
    size_t bucketOf(std::string_view text) const;

    std::span<const char* const> names_;
    std::vector<int> bucketHeads_; // first entry of each bucket, -1 when empty
    std::vector<int> chain_;       // the entry after each entry in its bucket, -1 at the end
};

template <class E>
class ZValueEnum : public ZValue {
public:
    explicit ZValueEnum(int32_t* variable, E defaultValue = E{})
        : value_(variable), defaultValue_(static_cast<int32_t>(defaultValue))
    {
    }

    std::string toStorageText() const override { return getDisplayText(); }
    // Storage holds the name; a name or its decimal index is read back, and a text that
    // is neither keeps the selection.
    void fromStorageText(std::string_view text) override
    {
        if (const int32_t index = storedIndexOf(text); index >= 0)
            store(index);
    }

    bool resetToDefault() override { return write(defaultValue_); }

    // "default" sets the default and the selection, "value" the selection (and the
    // default when there is no "default"); the index is repaired at the end.
    void loadAttributes(const ZMLElement& element) override
    {
        const std::string* defaultText = element.findAttribute("default");
        if (defaultText) {
            defaultValue_ = indexOf(*defaultText);
            store(defaultValue_);
        }
        if (const std::string* valueText = element.findAttribute("value")) {
            store(indexOf(*valueText));
            if (!defaultText)
                defaultValue_ = *value_;
        }
        clampToRange();
    }

    std::string getDisplayText() const override { return nameAt(*value_); }
    // Every text selects something: an unknown one selects index 0.
    bool setFromDisplayText(std::string_view text) override { return write(indexOf(text)); }

    void clampToRange() override
    {
        const int32_t limited = std::clamp(*value_, 0, count() - 1);
        if (limited != *value_) {
            *value_ = limited;
            changed_ = true;
        }
    }

    // One name per tick, however fast the gesture.
    bool stepByExponent(int count, int /*exponent*/) override { return stepBy(count); }
    bool stepBy(int count) override { return write(ZSaturatingCast<int32_t>(static_cast<double>(*value_) + count)); }

    double getNormalized() const override { return normalizedOf(*value_); }
    bool setNormalized(double x) override { return write(indexAt(x)); }
    // Selects a name by its index, limited to the table.
    bool setIndex(int32_t index) { return write(std::clamp(index, 0, count() - 1)); }

    std::string displayTextAt(double normalized) const override { return nameAt(indexAt(normalized)); }
    bool normalizedFromDisplayText(std::string_view text, double& normalized) const override
    {
        normalized = normalizedOf(indexOf(text));
        return true;
    }
    int stepCount() const override { return count(); }

    bool isChanged() const override { return changed_; }
    void clearChanged() override { changed_ = false; }

    int32_t defaultValue() const { return defaultValue_; }

private:
    static std::span<const char* const> names() { return ZEnumNames<E>::names(); }
    static int32_t count() { return static_cast<int32_t>(names().size()); }

    static int32_t indexOf(std::string_view text) { return std::max(nameIndexOf(text), 0); }
    static int32_t nameIndexOf(std::string_view text)
    {
        static const ZNameIndex index(names());
        return index.find(text);
    }
    static int32_t storedIndexOf(std::string_view text)
    {
        const int32_t named = nameIndexOf(text);
        return named >= 0 ? named : ZDecimalIndex(text, count());
    }

    // The name of an index; an index outside the table shows the name it is repaired to.
    static std::string nameAt(int32_t index) { return names()[static_cast<size_t>(std::clamp(index, 0, count() - 1))]; }

    static int32_t indexAt(double normalized)
    {
        return ZSaturatingCast<int32_t>(std::trunc(normalized * (count() - 1) + 0.5));
    }

    static double normalizedOf(int32_t index) { return count() > 1 ? static_cast<double>(index) / (count() - 1) : 0.0; }

    // A write that is not clamped, as from storage or attributes.
    void store(int32_t index)
    {
        *value_ = index;
        changed_ = true;
    }

    // The write of every user-facing operation: the changed flag is always set, the
    // range enforced afterwards; true when the index differed from the stored one.
    bool write(int32_t index)
    {
        changed_ = true;
        const bool differs = index != *value_;
        *value_ = index;
        clampToRange();
        return differs;
    }

    int32_t* value_;
    bool changed_ = false;
    int32_t defaultValue_;
};

} // namespace halvern
