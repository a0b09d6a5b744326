#pragma once

#include <QImage>
#include <QStringList>

// Themes (by default the four of the catalogue) composed as the player shows them (background,
// then every element's picture in its frame, cut to the background's shape),
// normal and minimised, at normal size and at one and a half times.
QImage renderContactSheet(const QStringList& themes);
