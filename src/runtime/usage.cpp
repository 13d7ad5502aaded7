#include "runtime/cmdline.h"

// Shared, so it names options that this program does not look at, and its spelling stays.
const char* const family_usage = R"(Usage: Velaris [options...]

Velaris can take a number of command-line flags, in the form of --flag or
--flag=value.  OpenGL options are available for all Velaris-related
applications; the frame-rate test is only for Velaris itself.  Here is a listof current flags:

--help
-h
Prints this message listing all command-line options, then quits.

--no_sound
Runs without initializing sound - can help identify a problem with sound hardware.

OPTIONS TO DISABLE HARDWARE ACCELERATION
Normally Velaris uses all available hardware capabilities to maximize framerate.
These options force Velaris not to use some aspects of hardware acceleration.
This hurts framerate, but can sometimes allow you to work around driver bugs.
--no_vbos
This disables the use of vertex buffer objects, as defined by 
GL_ARB_vertex_buffer_object.  VBOs are used to accelerate all aspects of Velaris
drawing.
--no_fbos
Disable the use of framebuffer obects, even if the hardware supports them.
--no_pbos
Disable the use of pixelbuffer obects, even if the hardware supports them.
--no_sprites
This disables the use of point sprites, as defined by GL_ARB_point_sprite.
Point sprites are used to accelerate runway lights, among other things.
--no_pixel_counters
This disables pixel counters, as defined by GL_ARB_occlusion_query.  Pixel
counters are used to calculate sun glare, among other things.
--no_aniso_filtering
This disables anisotropic filtering of textures, as defined by
GL_EXT_texture_filter_anisotropic.  Anisotropic filtering is used to make
runways look better.
--no_hw_mipmap
This disables hardware accelerated mipmap-creation, as defined by
GL_SGIS_generate_mipmap.  Velaris will still use mipmapping, but it will
create the mipmap images on the CPU instead of the GPU.
--no_fshaders
Disable the use of fragment shaders, even on hardware that reports having them.
--no_vshaders
Disable the use of vertex shaders, even on hardware that reports having them.
--no_glsl
Disable the use of GLSL, even on hardware theat supports it.
--no_threaded_ogl
Disable the use of OpenGL via multiple threads.

OPTIONS TO ENABLE INCOMPATIBLE HARDWARE ACCELERATION
Velaris will in a few cases intentionally disable hardware acceleration
to work around known driver compatibility bugs.  You can force Velaris
to use the feature anyway (if the card supports it) with these options,
but they may cause the sim to crash.
--use_vbos
Forces the use of VBOs, even on drivers where we at one point found
them to be unstable.
--use_sprites
Forces the use of point sprites, even on drivers where they cause bugs.
--use_fshaders
Force the use of fragment shaders, even if they would not normally be used.
--use_vshaders
Force the use of vertex shaders, even if they would not be used.
--use_glsl
Force the use of GLSL even on cards where we would avoid it due to driver compatibility problems.
--force_run
Velaris will not run on a machine that does not appear to have some
minimum requirements, like at least two texture units.  This will allow
Velaris to run no matter what the hardware looks like.  Please note that
most of the time if Velaris out-right refuses to run, it will probably
crash later if --force_run is used.

FRAMERATE TEST
--fps_test=n
This runs Velaris in frame-rate test mode.  The number indicates a framerate
test number, which is 3 digits indicating a combination of camera angle,
scenery complexity, and weather settings.  Velaris will run for 90 seconds
and quit, outputting 3 framerates to the Log.txt file for panel view,
no-panel view, and paused no-panel view.  This can be used to get repeatable
performance measurements without changing preferences.  (The preferences
file is ignored when the framerate test is in effect.)
--require_fps=n
When used after --fps_test this puts Velaris into a pass-fail mode.  The
sim will run only one 30 second test with the flight model paused.  The
sim will then exit with 0 if the measured fps is higher than N or 1
if the fps is lower.  This can be used to create a shell script that will
automatically detect whether Velaris performance is as expected.
)";
