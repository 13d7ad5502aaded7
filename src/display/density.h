// density.h: how fine a display is. Private to the folder.
#pragma once

// Dots an inch over 96, of the display with that index; 1 where nobody knows.
float display_density(int index);
