#include "gfx/glext_names.h"

static constexpr const char* buffer_names[] = {
    "glBindBufferARB",  "glDeleteBuffersARB",        "glGenBuffersARB",        "glIsBufferARB",
    "glBufferDataARB",  "glBufferSubDataARB",        "glGetBufferSubDataARB",  "glMapBufferARB",
    "glUnmapBufferARB", "glGetBufferParameterivARB", "glGetBufferPointervARB",
};

static constexpr const char* program_names[] = {
    "glProgramStringARB",
    "glBindProgramARB",
    "glDeleteProgramsARB",
    "glGenProgramsARB",
    "glProgramEnvParameter4dARB",
    "glProgramEnvParameter4dvARB",
    "glProgramEnvParameter4fARB",
    "glProgramEnvParameter4fvARB",
    "glProgramLocalParameter4dARB",
    "glProgramLocalParameter4dvARB",
    "glProgramLocalParameter4fARB",
    "glProgramLocalParameter4fvARB",
    "glGetProgramEnvParameterdvARB",
    "glGetProgramEnvParameterfvARB",
    "glGetProgramLocalParameterdvARB",
    "glGetProgramLocalParameterfvARB",
    "glGetProgramivARB",
    "glGetProgramStringARB",
    "glIsProgramARB",
};

static constexpr const char* attribute_names[] = {
    "glVertexAttrib1dARB",          "glVertexAttrib1dvARB",         "glVertexAttrib1fARB",
    "glVertexAttrib1fvARB",         "glVertexAttrib1sARB",          "glVertexAttrib1svARB",
    "glVertexAttrib2dARB",          "glVertexAttrib2dvARB",         "glVertexAttrib2fARB",
    "glVertexAttrib2fvARB",         "glVertexAttrib2sARB",          "glVertexAttrib2svARB",
    "glVertexAttrib3dARB",          "glVertexAttrib3dvARB",         "glVertexAttrib3fARB",
    "glVertexAttrib3fvARB",         "glVertexAttrib3sARB",          "glVertexAttrib3svARB",
    "glVertexAttrib4NbvARB",        "glVertexAttrib4NivARB",        "glVertexAttrib4NsvARB",
    "glVertexAttrib4NubARB",        "glVertexAttrib4NubvARB",       "glVertexAttrib4NuivARB",
    "glVertexAttrib4NusvARB",       "glVertexAttrib4bvARB",         "glVertexAttrib4dARB",
    "glVertexAttrib4dvARB",         "glVertexAttrib4fARB",          "glVertexAttrib4fvARB",
    "glVertexAttrib4ivARB",         "glVertexAttrib4sARB",          "glVertexAttrib4svARB",
    "glVertexAttrib4ubvARB",        "glVertexAttrib4uivARB",        "glVertexAttrib4usvARB",
    "glVertexAttribPointerARB",     "glEnableVertexAttribArrayARB", "glDisableVertexAttribArrayARB",
    "glGetVertexAttribdvARB",       "glGetVertexAttribfvARB",       "glGetVertexAttribivARB",
    "glGetVertexAttribPointervARB",
};

static constexpr const char* query_names[] = {
    "glGenQueriesARB", "glDeleteQueriesARB", "glIsQueryARB",          "glBeginQueryARB",
    "glEndQueryARB",   "glGetQueryivARB",    "glGetQueryObjectivARB", "glGetQueryObjectuivARB",
};

static constexpr const char* shader_names[] = {
    "glDeleteObjectARB",
    "glGetHandleARB",
    "glDetachObjectARB",
    "glCreateShaderObjectARB",
    "glShaderSourceARB",
    "glCompileShaderARB",
    "glCreateProgramObjectARB",
    "glAttachObjectARB",
    "glLinkProgramARB",
    "glUseProgramObjectARB",
    "glValidateProgramARB",
    "glUniform1fARB",
    "glUniform2fARB",
    "glUniform3fARB",
    "glUniform4fARB",
    "glUniform1iARB",
    "glUniform2iARB",
    "glUniform3iARB",
    "glUniform4iARB",
    "glUniform1fvARB",
    "glUniform2fvARB",
    "glUniform3fvARB",
    "glUniform4fvARB",
    "glUniform1ivARB",
    "glUniform2ivARB",
    "glUniform3ivARB",
    "glUniform4ivARB",
    "glUniformMatrix2fvARB",
    "glUniformMatrix3fvARB",
    "glUniformMatrix4fvARB",
    "glGetObjectParameterfvARB",
    "glGetObjectParameterivARB",
    "glGetInfoLogARB",
    "glGetAttachedObjectsARB",
    "glGetUniformLocationARB",
    "glGetActiveUniformARB",
    "glGetUniformfvARB",
    "glGetUniformivARB",
    "glGetShaderSourceARB",
};

static constexpr const char* vertex_shader_names[] = {
    "glBindAttribLocationARB",
    "glGetActiveAttribARB",
    "glGetAttribLocationARB",
};

static constexpr const char* framebuffer_names[] = {
    "glIsRenderbufferEXT",          "glBindRenderbufferEXT",
    "glDeleteRenderbuffersEXT",     "glGenRenderbuffersEXT",
    "glRenderbufferStorageEXT",     "glGetRenderbufferParameterivEXT",
    "glIsFramebufferEXT",           "glBindFramebufferEXT",
    "glDeleteFramebuffersEXT",      "glGenFramebuffersEXT",
    "glCheckFramebufferStatusEXT",  "glFramebufferTexture1DEXT",
    "glFramebufferTexture2DEXT",    "glFramebufferTexture3DEXT",
    "glFramebufferRenderbufferEXT", "glGetFramebufferAttachmentParameterivEXT",
    "glGenerateMipmapEXT",
};

static constexpr const char* compression_names[] = {
    "glCompressedTexImage3DARB",    "glCompressedTexImage2DARB",    "glCompressedTexImage1DARB",
    "glCompressedTexSubImage3DARB", "glCompressedTexSubImage2DARB", "glCompressedTexSubImage1DARB",
    "glGetCompressedTexImageARB",
};

static constexpr const char* blend_names[] = {
    "glBlendFuncSeparateEXT",
    "glBlendEquationSeparateEXT",
};

// clang-format off
const glext_group glext_groups[] = {
    {buffer_names, {&OGL_extensions::vbo_avail}},
    {program_names, {&OGL_extensions::vprog_avail, &OGL_extensions::fprog_avail}},
    {attribute_names, {&OGL_extensions::vprog_avail}},
    {query_names, {&OGL_extensions::occlude_avail}},
    {shader_names, {&OGL_extensions::shad_objs_avail}},
    {vertex_shader_names, {&OGL_extensions::vshader_avail}},
    {framebuffer_names, {&OGL_extensions::framebuf_avail}},
    {compression_names, {&OGL_extensions::tex_comp_avail}},
    {blend_names, {&OGL_extensions::sblend_avail}},
};
// clang-format on
