#pragma once

#include <cmath>

// Window sizes are kept in twips, 1440 to the inch; the screen has 96 pixels to the inch.
constexpr int kTwipsPerPixel = 15;

inline int twipsToPixels(int twips) {
    return int(std::lround(double(twips) / kTwipsPerPixel));
}
inline int pixelsToTwips(int pixels) {
    return pixels * kTwipsPerPixel;
}

// List column widths are kept in hundredths of a millimetre.
inline int hundredthsOfMmToPixels(int hundredths) {
    return int(std::lround(hundredths * 96.0 / 2540.0));
}
