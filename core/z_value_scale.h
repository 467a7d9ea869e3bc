#pragma once

// Wrappers that reshape the normalised view of another value object with a taper,
// so that a knob spends more of its travel on the low end of the range. Everything
// except the normalised conversions and the coarse step is forwarded to the inner
// value. ZValueScaleSqr shows the square root of the inner position;
// ZValueScalePower<4> its fourth root.

#include "core/z_value.h"

#include <cmath>
#include <memory>

namespace halvern {

class ZValueScaleSqr : public ZValue {
public:
    // Wraps a value that stays owned by the caller.
    explicit ZValueScaleSqr(ZValue& inner) : inner_(&inner) {}
    // Wraps a value that the wrapper owns and deletes.
    explicit ZValueScaleSqr(std::unique_ptr<ZValue> inner) : owned_(std::move(inner)), inner_(owned_.get()) {}

    ZValueScaleSqr(const ZValueScaleSqr&) = delete;
    ZValueScaleSqr& operator=(const ZValueScaleSqr&) = delete;

    std::string toStorageText() const override { return inner_->toStorageText(); }
    void fromStorageText(std::string_view text) override { inner_->fromStorageText(text); }
    bool resetToDefault() override { return inner_->resetToDefault(); }
    void writeTo(ZStream& stream) const override { inner_->writeTo(stream); }
    void loadAttributes(const ZMLElement& element) override { inner_->loadAttributes(element); }
    std::string getDisplayText() const override { return inner_->getDisplayText(); }
    bool setFromDisplayText(std::string_view text) override { return inner_->setFromDisplayText(text); }
    void clampToRange() override { inner_->clampToRange(); }
    bool stepByExponent(int count, int exponent) override { return inner_->stepByExponent(count, exponent); }
    bool setByIndex(int index, int count) override { return inner_->setByIndex(index, count); }
    int stepCount() const override { return inner_->stepCount(); }
    bool isChanged() const override { return inner_->isChanged(); }
    void clearChanged() override { inner_->clearChanged(); }

    double getNormalized() const override { return fromInner(inner_->getNormalized()); }
    bool setNormalized(double x) override { return inner_->setNormalized(toInner(x)); }
    // One tick is a thousandth of the tapered travel.
    bool stepBy(int count) override;

    std::string displayTextAt(double normalized) const override { return inner_->displayTextAt(toInner(normalized)); }
    bool normalizedFromDisplayText(std::string_view text, double& normalized) const override;

protected:
    // The taper: the inner position of an outer one, and back.
    virtual double toInner(double outer) const { return outer * outer; }
    virtual double fromInner(double inner) const { return std::sqrt(inner); }

private:
    std::unique_ptr<ZValue> owned_;
    ZValue* inner_;
};

template <int Power>
class ZValueScalePower : public ZValueScaleSqr {
public:
    using ZValueScaleSqr::ZValueScaleSqr;

protected:
    double toInner(double outer) const override { return std::pow(outer, static_cast<double>(Power)); }
    double fromInner(double inner) const override { return std::pow(inner, 1.0 / Power); }
};

} // namespace halvern
