#pragma once

// The timed button of a MultiParameter in "Switch" and "Trigger" modes. Pressing it starts
// a move of a position between 0 and 1 that takes one switch time per full stroke; the
// targets follow the position instead of the MultiParameter's value. A switch goes up while
// pressed and back down when released; a trigger goes up and comes back by itself.

namespace halvern {

class ZMultiParameterSwitch {
public:
    // One block: the threshold check against the button, then, while moving, a step of
    // `stroke` (the fraction of a full move that the block covers). True when the position
    // moved, so that the targets have to follow it.
    bool process(bool trigger, bool pressed, double stroke);
    // Stops the move where it is (a state load).
    void stop() { moving_ = false; }

    double position() const { return position_; }
    bool moving() const { return moving_; }
    double direction() const { return direction_; }

private:
    bool needsStart(bool trigger, bool pressed);
    void start(bool trigger);
    void step(bool trigger, double stroke);

    bool moving_ = false;
    double position_ = 0.0;
    double direction_ = 1.0;
    bool wasPressed_ = false;
};

} // namespace halvern
