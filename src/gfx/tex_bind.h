// tex_bind.h: which texture each unit of the card has, so that binding what is bound costs nothing.
// Unit 0 is the active one before and after every call. Threads: main thread only.
#pragma once

// Skips what is bound already. Every `env` modulates by the current colour; a changed one is set again.
void TEX_bind_ref(int tex_id, int unit, int env);
void TEX_forget_bound();                 // of every unit: the context is a new one
void TEX_forget_bound(unsigned tex_id);  // the name is free, and may be given to another texture
void TEX_set_blend_level(int unit, float level);
