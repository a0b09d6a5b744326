#include "player/wheelnotches.h"

int WheelNotches::add(int delta)
{
    if ((delta > 0 && m_units < 0) || (delta < 0 && m_units > 0))
        m_units = 0;
    m_units += delta;
    const int notches = m_units / unitsPerNotch; // toward zero: the remainder keeps its sign
    m_units -= notches * unitsPerNotch;
    return notches;
}
