#pragma once

#include <QByteArray>

// Writes a GIF of the given size (Qt can read GIFs but not write them). The LZW stream uses 9-bit
// codes with a clear code often enough that the code size never grows, so the file is about 1.1
// bytes per pixel: handy for a picture of a known large size.
QByteArray gifBytes(int width, int height);
