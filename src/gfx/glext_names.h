// glext_names.h: the entry points that an extension brings, by name, a group for each extension. Private to glext.cpp.
#pragma once

#include <span>

using entry_point_names = std::span<const char* const>;

extern const entry_point_names buffer_entry_points;
extern const entry_point_names program_entry_points;    // of vertex and of fragment programs
extern const entry_point_names attribute_entry_points;  // of vertex programs
extern const entry_point_names query_entry_points;
extern const entry_point_names shader_entry_points;
extern const entry_point_names vertex_shader_entry_points;
extern const entry_point_names framebuffer_entry_points;
extern const entry_point_names compression_entry_points;
extern const entry_point_names blend_entry_points;
