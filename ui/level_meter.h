#pragma once

// ZLevelMeter: a peak meter. It takes the highest peak since its last look from a
// source on every timer tick and shows it with meter ballistics: it rises at once,
// falls 24 dB a second, and holds the highest peak for 1.5 seconds as a line and a
// number.

#include "ui/view.h"

#include <functional>
#include <string>

namespace halvern {

class ZLevelMeter : public ZView {
public:
    static constexpr double kFloorDB = -60.0;
    static constexpr double kCeilingDB = 6.0;
    static constexpr double kFallDBPerSecond = 24.0;
    static constexpr double kHoldSeconds = 1.5;

    // source gives the linear peak since it was last asked (0 when none).
    ZLevelMeter(std::string label, std::function<double()> source, double tickSeconds);

    std::string Text() const override;
    void Refresh() override;
    // The shown level and the held peak in dB (kFloorDB for silence).
    double levelDB() const { return levelDB_; }
    double heldDB() const { return heldDB_; }

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    double fraction(double db) const;

    std::string label_;
    std::function<double()> source_;
    double tickSeconds_;
    double levelDB_ = kFloorDB;
    double heldDB_ = kFloorDB;
    double heldFor_ = 0.0;
};

} // namespace halvern
