#pragma once

#include <QColor>
#include <QString>

// The colours of one theme colour ("blueberry"). Every picture of every family
// takes its colours from here, so a colour is changed in one place.
struct Palette {
    QColor shellTop, shellBottom;   // the body, lit from above
    QColor shellEdge;               // the hard outline around everything
    QColor shellShine;              // the one-pixel highlight along top edges
    QColor spineTop, spineBottom;   // the darker band that holds the small buttons
    QColor well;                    // recesses that buttons sit in
    QColor keyTop, keyBottom;       // button faces
    QColor keyEdge;                 // button outlines
    QColor ink;                     // glyphs on a button face
    QColor litTop, litBottom;       // the face of a highlighted button
    QColor litInk;                  // glyphs on a highlighted face
    QColor screenTop, screenBottom; // dark glass behind cover art and text
    QColor grille;                  // speaker slots and dots
};

// The palette of one of the seven colour names; an unknown name gets graphite.
const Palette& palette(const QString& colourName);
