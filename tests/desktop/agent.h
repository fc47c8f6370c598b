#pragma once

#include <windows.h>

#include "json.h"

namespace desktop_test {

/// The open popups, in the order in which they were opened.
void writePopups(Json& json);

/// A window's own title and each of its visible controls: rectangle on the screen, and
/// for each of their texts how much room there is and how much is needed, in pixels.
void writeMeasures(Json& json, HWND window);

}  // namespace desktop_test
