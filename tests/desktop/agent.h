#pragma once

#include <windows.h>

#include "json.h"

namespace desktop_test {

/// The open popups, in the order in which they were opened.
void writePopups(Json& json);

/// Whether a window's title is cut; each of its visible controls: rectangle on the
/// screen, and those of its texts that are cut.
void writeMeasures(Json& json, HWND window);

/// What a leak would raise: objects of the graphics system, kernel handles, and the
/// highest window or menu handle in use.
void writeResources(Json& json);

}  // namespace desktop_test
