#pragma once

// The shape numbers every family shares, in points (a picture has two pixels
// per point, so 0.5 is one pixel). Change a shape here and rebuild.
namespace Style {

constexpr double pixel = 0.5;           // one device pixel

// Transport keys (rewind, play/pause, fast-forward) inside their 34 × 52 frame.
constexpr double keyInsetX = 2.0;
constexpr double keyInsetY = 3.0;
constexpr double keyRadius = 7.0;
constexpr double keyDepth = 1.5;        // the darker side below a key's face
constexpr double keyGlyphScale = 1.0;

// Small keys (close, minimise, the menus) inside their 17 × 14 frame.
constexpr double smallInset = 1.0;
constexpr double smallRadius = 3.5;
constexpr double smallDepth = 1.0;

// A recess is this much larger than the key on every side.
constexpr double wellMargin = 1.0;

// Bodies: corner radius per family.
constexpr double miniRadius = 7.0;
constexpr double neoRadius = 30.0;
constexpr double maxRadius = 7.0;
constexpr double nanoRadius = 10.0;

// Dark glass behind art and text.
constexpr double screenRadius = 3.0;

// The scrub groove.
constexpr double grooveHeight = 3.0;

} // namespace Style
