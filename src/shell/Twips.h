#pragma once

namespace tonaro {

// The windows' sizes and places are designed in twips, 15 to a pixel.
constexpr int TwipsPerPixel = 15;

constexpr int twipsToPixels(int twips)
{
    return (twips + TwipsPerPixel / 2) / TwipsPerPixel;
}

} // namespace tonaro
