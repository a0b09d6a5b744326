#pragma once

#include <QString>

// Where the open track is and how long it is, as "1:23 / 4:56": whole seconds
// (a place is shown as reached only once it is), with hours when the track
// or the place has them ("1:02:03 / 2:00:00"). A length of 0 or less is
// unknown and shown as "--:--".
QString timeText(double position, double length);
