#include "core/z_value_number.h"

#include "core/z_format.h"
#include "core/z_saturating_cast.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <type_traits>
#include <vector>

namespace halvern {

namespace {

// Reads a numeric attribute; false when it is absent or not a number.
template <class StorageType>
bool readNumber(const ZMLElement& element, std::string_view name, StorageType& number)
{
    const std::string* text = element.findAttribute(name);
    double parsed = 0;
    if (!text || !ZParseNumber(*text, parsed))
        return false;
    number = ZSaturatingCast<StorageType>(parsed);
    return true;
}

} // namespace

template <class V, class S, int R, int X>
ZValueNumber<V, S, R, X>::ZValueNumber(V* variable, S minimum, S maximum, S defaultValue, S increment,
                                       std::string format)
    : value_(variable), minimum_(minimum), maximum_(maximum), increment_(increment), maximalIncrement_(increment),
      defaultValue_(defaultValue), format_(std::move(format))
{
}

template <class V, class S, int R, int X>
std::string ZValueNumber<V, S, R, X>::toStorageText() const
{
    return ZFormatFixed(static_cast<double>(*value_), 6);
}

template <class V, class S, int R, int X>
void ZValueNumber<V, S, R, X>::fromStorageText(std::string_view text)
{
    double number = 0;
    if (ZParseNumber(text, number))
        store(ZSaturatingCast<S>(number));
}

template <class V, class S, int R, int X>
bool ZValueNumber<V, S, R, X>::resetToDefault()
{
    return write(defaultValue_);
}

template <class V, class S, int R, int X>
void ZValueNumber<V, S, R, X>::loadAttributes(const ZMLElement& element)
{
    ZValueList::loadAttributes(element);
    readNumber(element, "min", minimum_);
    readNumber(element, "max", maximum_);

    // "default" sets the default and the variable; "value" sets the variable and,
    // without a "default", the default too.
    S number{};
    const bool hasDefault = readNumber(element, "default", number);
    if (hasDefault) {
        defaultValue_ = number;
        store(number);
    }
    if (readNumber(element, "value", number)) {
        store(number);
        if (!hasDefault)
            defaultValue_ = number;
    }

    readNumber(element, "inc", increment_);
    if (!readNumber(element, "maxinc", maximalIncrement_))
        maximalIncrement_ = std::max(increment_, maximalIncrement_);
    if (const std::string* format = element.findAttribute("format"))
        format_ = *format;
}

template <class V, class S, int R, int X>
std::string ZValueNumber<V, S, R, X>::getDisplayText() const
{
    return textOf(*value_);
}

template <class V, class S, int R, int X>
bool ZValueNumber<V, S, R, X>::setFromDisplayText(std::string_view text)
{
    S number{};
    if (!parse(text, number))
        return false;
    const V before = *value_;
    write(number);
    return *value_ != before;
}

template <class V, class S, int R, int X>
void ZValueNumber<V, S, R, X>::clampToRange()
{
    const V inRange = limited(*value_);
    if (inRange != *value_) {
        *value_ = inRange;
        changed_ = true;
    }
}

template <class V, class S, int R, int X>
bool ZValueNumber<V, S, R, X>::stepByExponent(int count, int exponent)
{
    const double step = std::min(static_cast<double>(increment_) * std::ldexp(1.0, exponent),
                                 static_cast<double>(maximalIncrement_));
    const V before = *value_;
    write(ZSaturatingCast<S>(static_cast<double>(*value_) + step * count));
    return *value_ != before;
}

template <class V, class S, int R, int X>
bool ZValueNumber<V, S, R, X>::stepBy(int count)
{
    const V before = *value_;
    write(ZSaturatingCast<S>(static_cast<double>(*value_) + static_cast<double>(increment_) * count));
    return *value_ != before;
}

template <class V, class S, int R, int X>
double ZValueNumber<V, S, R, X>::getNormalized() const
{
    return normalizedOf(*value_);
}

template <class V, class S, int R, int X>
bool ZValueNumber<V, S, R, X>::setNormalized(double x)
{
    return write(valueAt(x));
}

template <class V, class S, int R, int X>
std::string ZValueNumber<V, S, R, X>::displayTextAt(double normalized) const
{
    return textOf(limited(ZSaturatingCast<V>(valueAt(normalized))));
}

template <class V, class S, int R, int X>
bool ZValueNumber<V, S, R, X>::normalizedFromDisplayText(std::string_view text, double& normalized) const
{
    S number{};
    if (!parse(text, number))
        return false;
    normalized = normalizedOf(number);
    return true;
}

template <class V, class S, int R, int X>
int ZValueNumber<V, S, R, X>::stepCount() const
{
    if constexpr (R != 0) {
        const int64_t positions = static_cast<int64_t>(maximum_) - static_cast<int64_t>(minimum_) + 1;
        return positions > 0 && positions <= INT_MAX ? static_cast<int>(positions) : 0;
    } else {
        return 0;
    }
}

template <class V, class S, int R, int X>
S ZValueNumber<V, S, R, X>::valueAt(double normalized) const
{
    const double range = static_cast<double>(maximum_) - static_cast<double>(minimum_);
    if constexpr (R != 0)
        return ZSaturatingCast<S>(static_cast<double>(minimum_) + std::trunc(range * normalized + 0.5));
    else
        return ZSaturatingCast<S>(range * normalized + static_cast<double>(minimum_));
}

template <class V, class S, int R, int X>
double ZValueNumber<V, S, R, X>::normalizedOf(S value) const
{
    if (minimum_ == maximum_)
        return 0.0;
    const double x = (static_cast<double>(value) - static_cast<double>(minimum_)) /
                     (static_cast<double>(maximum_) - static_cast<double>(minimum_));
    if (x > 1.0)
        return 1.0;
    if (x < 0.0)
        return 0.0;
    return x;
}

template <class V, class S, int R, int X>
V ZValueNumber<V, S, R, X>::limited(V value) const
{
    // Maximum first, then minimum, so that a reversed range ends at its minimum.
    const V highest = ZSaturatingCast<V>(maximum_);
    const V lowest = ZSaturatingCast<V>(minimum_);
    if (value > highest)
        value = highest;
    if (value < lowest)
        value = lowest;
    return value;
}

template <class V, class S, int R, int X>
std::string ZValueNumber<V, S, R, X>::textOf(V value) const
{
    if (formatter_)
        return formatter_(static_cast<S>(value));
    return ZFormat(format_).arg(value).text();
}

template <class V, class S, int R, int X>
bool ZValueNumber<V, S, R, X>::parse(std::string_view text, S& value) const
{
    if (parser_)
        return parser_(text, value);
    if (matchDisplayText(text, value))
        return true;
    std::vector<std::string> arguments;
    double number = 0;
    if (!ZScanFormat(format_, text, arguments) || arguments.empty() || !ZParseNumber(arguments[0], number))
        return false;
    value = ZSaturatingCast<S>(number);
    return true;
}

// A whole-number value shown by a formatter reads its own texts back, whatever their case
// ("on" sets a switch shown as "On"); ranges of more than kMaxMatchedSteps values are
// left to the numbers.
template <class V, class S, int R, int X>
bool ZValueNumber<V, S, R, X>::matchDisplayText(std::string_view text, S& value) const
{
    if constexpr (std::is_integral_v<S>) {
        if (!formatter_ || maximum_ < minimum_ || maximum_ - minimum_ >= kMaxMatchedSteps)
            return false;
        const std::string_view typed = ZTrimmed(text);
        for (S candidate = minimum_; candidate <= maximum_; ++candidate)
            if (ZEqualsIgnoringCase(formatter_(candidate), typed)) {
                value = candidate;
                return true;
            }
    }
    return false;
}

// A write that is not clamped, as from storage or attributes.
template <class V, class S, int R, int X>
void ZValueNumber<V, S, R, X>::store(S value)
{
    *value_ = ZSaturatingCast<V>(value);
    changed_ = true;
}

// The write of every user-facing operation: the changed flag is always set and the
// range enforced afterwards; true when the number differed from the stored one.
template <class V, class S, int R, int X>
bool ZValueNumber<V, S, R, X>::write(S value)
{
    const V number = ZSaturatingCast<V>(value);
    const bool differs = number != *value_;
    changed_ = true;
    *value_ = number;
    clampToRange();
    return differs;
}

template class ZValueNumber<double, double, 0, 0>;
template class ZValueNumber<float, double, 0, 0>;
template class ZValueNumber<int, int, 1, 0>;
template class ZValueNumber<short, int, 1, 0>;
template class ZValueNumber<int64_t, int64_t, 0, 0>;

} // namespace halvern
