#pragma once

// A numeric value: a view onto an owner's variable of ValueType with a range, default,
// steps and display format held in StorageType. IntegerRounding is 1 for the integer
// values whose normalised positions round to the nearest integer; Reserved is 0 in
// every instantiation.

#include "core/z_value_list.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace halvern {

template <class ValueType, class StorageType, int IntegerRounding, int Reserved>
class ZValueNumber : public ZValueList {
public:
    // Produces the display text instead of the format string.
    using Formatter = std::function<std::string(StorageType value)>;
    // Parses typed text instead of the format string; false when the text is not a number.
    using Parser = std::function<bool(std::string_view text, StorageType& value)>;

    // The variable is not touched; the maximal increment starts equal to the increment.
    ZValueNumber(ValueType* variable, StorageType minimum, StorageType maximum, StorageType defaultValue,
                 StorageType increment, std::string format = "{0}");

    std::string toStorageText() const override;
    void fromStorageText(std::string_view text) override;
    bool resetToDefault() override;
    void loadAttributes(const ZMLElement& element) override;
    std::string getDisplayText() const override;
    bool setFromDisplayText(std::string_view text) override;
    void clampToRange() override;
    bool stepByExponent(int count, int exponent) override;
    bool stepBy(int count) override;
    double getNormalized() const override;
    bool setNormalized(double x) override;

    std::string displayTextAt(double normalized) const override;
    bool normalizedFromDisplayText(std::string_view text, double& normalized) const override;
    int stepCount() const override;

    bool isChanged() const override { return changed_; }
    void clearChanged() override { changed_ = false; }

    StorageType minimum() const { return minimum_; }
    StorageType maximum() const { return maximum_; }
    StorageType defaultValue() const { return defaultValue_; }
    StorageType increment() const { return increment_; }
    StorageType maximalIncrement() const { return maximalIncrement_; }
    const std::string& format() const { return format_; }

    void setMaximalIncrement(StorageType maximalIncrement) { maximalIncrement_ = maximalIncrement; }
    void setFormat(std::string format) { format_ = std::move(format); }
    void setFormatter(Formatter formatter) { formatter_ = std::move(formatter); }
    void setParser(Parser parser) { parser_ = std::move(parser); }

private:
    StorageType valueAt(double normalized) const;
    double normalizedOf(StorageType value) const;
    ValueType limited(ValueType value) const;
    std::string textOf(ValueType value) const;
    bool parse(std::string_view text, StorageType& value) const;
    bool matchDisplayText(std::string_view text, StorageType& value) const;
    static constexpr StorageType kMaxMatchedSteps = 256;
    void store(StorageType value);
    bool write(StorageType value);

    ValueType* value_;
    bool changed_ = false;
    StorageType minimum_;
    StorageType maximum_;
    StorageType increment_;
    StorageType maximalIncrement_;
    StorageType defaultValue_;
    std::string format_;
    Formatter formatter_;
    Parser parser_;
};

extern template class ZValueNumber<double, double, 0, 0>;
extern template class ZValueNumber<float, double, 0, 0>;
extern template class ZValueNumber<int, int, 1, 0>;
extern template class ZValueNumber<short, int, 1, 0>;
extern template class ZValueNumber<int64_t, int64_t, 0, 0>;

using ZValueDouble = ZValueNumber<double, double, 0, 0>;
using ZValueFloat = ZValueNumber<float, double, 0, 0>;
using ZValueInt = ZValueNumber<int, int, 1, 0>;
using ZValueShort = ZValueNumber<short, int, 1, 0>;
using ZValueInt64 = ZValueNumber<int64_t, int64_t, 0, 0>;

} // namespace halvern
