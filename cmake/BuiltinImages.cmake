# The program's pictures, put into it as raw pixels: a small tool of the host unpacks each PNG, and the assembler takes
# the bytes in as they are. (As an array in C++ they would be megabytes of text and most of the build's time.)
enable_language(ASM)

add_executable(pack_image tools/pack_image.cpp)
target_compile_options(pack_image PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
target_link_libraries(pack_image PRIVATE PNG::PNG)

# name of the array, picture, width, height
set(VELARIS_BUILTIN_IMAGES
  t_installer_dat installer_sheet 1010 764
  t_ins_back_1_dat background_1 1024 768
  t_ins_back_2_dat background_2 1024 768
  t_interface_dat interface_atlas 512 512)

# Pictures for windows that are shown larger, and letters for each scale but 1: as they are, unpacked when they are
# wanted, so that the program grows by what they take on disk.
set(VELARIS_PACKED_IMAGES
  t_installer_2x installer_sheet_2x
  t_ins_back_1_2x background_1_2x
  t_interface_2x interface_atlas_2x
  t_glyphs_050 glyphs_0.5x
  t_glyphs_062 glyphs_0.625x
  t_glyphs_075 glyphs_0.75x
  t_glyphs_087 glyphs_0.875x
  t_glyphs_125 glyphs_1.25x
  t_glyphs_150 glyphs_1.5x
  t_glyphs_175 glyphs_1.75x
  t_glyphs_200 glyphs_2x
  t_glyphs_250 glyphs_2.5x
  t_glyphs_300 glyphs_3x
  t_glyphs_400 glyphs_4x)

function(velaris_builtin_images target)
  set(folder "${CMAKE_BINARY_DIR}/builtin_images")
  file(MAKE_DIRECTORY "${folder}")
  set(text ".section .rodata\n")
  set(rest ${VELARIS_BUILTIN_IMAGES})
  while(rest)
    list(POP_FRONT rest array picture width height)
    set(png "${CMAKE_SOURCE_DIR}/art/rendered/${picture}.png")
    set(raw "${folder}/${array}.rgba")
    add_custom_command(OUTPUT "${raw}" VERBATIM
      COMMAND pack_image "${png}" ${width} ${height} "${raw}"
      DEPENDS pack_image "${png}"
      COMMENT "Unpacking ${picture}.png")
    list(APPEND raws "${raw}")
    string(APPEND text ".globl ${array}\n.type ${array}, %object\n.balign 16\n${array}:\n"
      ".incbin \"${raw}\"\n.size ${array}, . - ${array}\n")
  endwhile()
  set(rest ${VELARIS_PACKED_IMAGES})
  while(rest)
    list(POP_FRONT rest array picture)
    set(png "${CMAKE_SOURCE_DIR}/art/rendered/${picture}.png")
    list(APPEND raws "${png}")
    string(APPEND text ".globl ${array}\n.type ${array}, %object\n${array}:\n.incbin \"${png}\"\n"
      ".size ${array}, . - ${array}\n.globl ${array}_end\n${array}_end:\n.byte 0\n")
  endwhile()
  string(APPEND text ".section .note.GNU-stack,\"\",%progbits\n")
  file(CONFIGURE OUTPUT "${folder}/builtin_images.S" CONTENT "${text}" @ONLY)
  # A library of its own: our compile options are for C++, and an assembler stumbles over some of them.
  add_library(velaris_builtin_images OBJECT "${folder}/builtin_images.S")
  set_source_files_properties("${folder}/builtin_images.S" PROPERTIES OBJECT_DEPENDS "${raws}")
  target_sources(${target} PRIVATE $<TARGET_OBJECTS:velaris_builtin_images>)
endfunction()
