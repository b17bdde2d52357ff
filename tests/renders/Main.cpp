// SPDX-License-Identifier: Apache-2.0
// Prints a checksum of every render, a line each, so that two states of the library can be compared: qx_renders
#include "Picture.h"

int main() {
    if (QX_Birth() != 0) return 1;
    renders::transfers();
    renders::transforms(70);
    renders::samplers();
    renders::copies();
    renders::worlds();
    return QX_Death() == 0 ? 0 : 1;
}
