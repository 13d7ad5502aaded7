// points.h: the desktop counts windows and the mouse in points, of which a fine display may have several pixels each.
// Private to the folder.
#pragma once

// From the window's points to the pixels of its drawing surface.
void display_to_surface(int& x, int& y);
