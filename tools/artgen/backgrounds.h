#pragma once

#include "palette.h"

#include "themes/defaultlayouts.h"

#include <QImage>

// The player's background, normal ("player") or minimised ("player-min"),
// drawn from the family's default layout: every recess sits under the element
// the layout places there, so moving an element in the layout moves its
// recess too.
QImage renderPlayer(ThemeFamily family, const Palette& colours, bool minimised);
