#include "gfx/glext_names.h"

// As the extensions' own papers list them. Which of them the program calls does not matter: a driver that has but some
// of a group is not to be trusted with it.
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

const entry_point_names buffer_entry_points = buffer_names;
const entry_point_names program_entry_points = program_names;
const entry_point_names attribute_entry_points = attribute_names;
const entry_point_names query_entry_points = query_names;
const entry_point_names shader_entry_points = shader_names;
const entry_point_names vertex_shader_entry_points = vertex_shader_names;
const entry_point_names framebuffer_entry_points = framebuffer_names;
const entry_point_names compression_entry_points = compression_names;
const entry_point_names blend_entry_points = blend_names;
