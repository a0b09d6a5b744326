#pragma once

// Turns a wheel's or a touchpad's scroll deltas into whole notches of 120
// units (eighths of a degree, as a mouse wheel's click gives). Small deltas
// add up; what is left over after a notch counts towards the next, and a
// turn the other way starts afresh.
class WheelNotches
{
public:
    static constexpr int unitsPerNotch = 120;
    // The whole notches this delta completes, negative downwards.
    int add(int delta);

private:
    int m_units = 0;
};
