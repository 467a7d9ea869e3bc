#include "ui/click_counter.h"

#include <cmath>

namespace halvern {

int ZClickCounter::Press(int button, uint32_t time, double x, double y)
{
    const bool follows = count_ == 1 && button == button_ && static_cast<uint32_t>(time - time_) <= kMaxInterval &&
                         std::abs(x - x_) <= kMaxDistance && std::abs(y - y_) <= kMaxDistance;
    count_ = follows ? 2 : 1;
    button_ = button;
    time_ = time;
    x_ = x;
    y_ = y;
    return count_;
}

} // namespace halvern
