#include "modulation/multi_parameter_switch.h"

namespace halvern {

bool ZMultiParameterSwitch::process(bool trigger, bool pressed, double stroke)
{
    if (needsStart(trigger, pressed))
        start(trigger);
    if (!moving_)
        return false;
    step(trigger, stroke);
    return true;
}

bool ZMultiParameterSwitch::needsStart(bool trigger, bool pressed)
{
    const bool freshPress = pressed && !wasPressed_;
    wasPressed_ = pressed;
    if (trigger) {
        // A trigger's state is always "off", so a held button restarts it once it has come
        // to rest; while it moves, only a new press may send it up again, otherwise a held
        // button would turn it round at the top in every block and it would never fall back.
        return pressed && (!moving_ || freshPress);
    }
    const bool on = moving_ ? direction_ > 0.0 : position_ >= 0.5;
    return on != pressed;
}

void ZMultiParameterSwitch::start(bool trigger)
{
    if (!moving_) {
        moving_ = true;
        direction_ = position_ < 0.5 ? 1.0 : -1.0;
    } else if (trigger) {
        direction_ = 1.0; // a press on the way back sends it up again
    } else {
        direction_ = -direction_;
    }
}

void ZMultiParameterSwitch::step(bool trigger, double stroke)
{
    position_ += direction_ * stroke;
    if (position_ <= 0.0) {
        position_ = 0.0;
        moving_ = false;
    } else if (position_ > 1.0) {
        position_ = 1.0;
        if (trigger)
            direction_ = -direction_; // comes back to 0 by itself
        else
            moving_ = false;
    }
}

} // namespace halvern
