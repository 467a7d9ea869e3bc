#pragma once

// The abstract value: a view onto a variable that its owner keeps, adding a range, a
// default, steps, a normalised 0..1 view, a storage text and a display text.

#include "core/z_object.h"
#include "state/zml_fwd.h"

#include <string>
#include <string_view>

namespace halvern {

class ZStream;

// Something that can be written to and read from a stream and an attribute element.
class ZStorable : public ZObject {
public:
    virtual std::string toStorageText() const = 0;
    virtual void fromStorageText(std::string_view text) = 0;
};

class ZValue : public ZStorable {
public:
    // Writes the default; true when the variable changed.
    virtual bool resetToDefault() = 0;
    // Writes the storage text to a stream.
    virtual void writeTo(ZStream& stream) const;
    // Reads the value's attributes from a layout or settings element.
    virtual void loadAttributes(const ZMLElement& element) = 0;
    virtual std::string getDisplayText() const = 0;
    // Parses text typed by the user; true when the variable changed.
    virtual bool setFromDisplayText(std::string_view text) = 0;
    virtual void clampToRange() = 0;
    virtual bool stepByExponent(int count, int exponent) = 0;
    virtual bool stepBy(int count) = 0;
    virtual double getNormalized() const = 0;
    virtual bool setNormalized(double x) = 0;
    // Sets the index-th of count equally spaced normalised positions.
    virtual bool setByIndex(int index, int count);

    // Display text of a normalised position, without touching the variable.
    virtual std::string displayTextAt(double normalized) const = 0;
    // Normalised position of a typed text, without touching the variable; false when the
    // text does not parse.
    virtual bool normalizedFromDisplayText(std::string_view text, double& normalized) const = 0;
    // Number of distinct positions for stepped values (enumerations, integers), 0 when continuous.
    virtual int stepCount() const = 0;

    virtual bool isChanged() const = 0;
    virtual void clearChanged() = 0;
};

} // namespace halvern
