// The host's OpenGL: an offscreen context of Mesa's, made through EGL on the
// surfaceless platform, and the GL functions the host calls itself. Plugins
// draw into the same context through their own libGL, as they do in the
// simulator. Nothing of EGL or GL is linked: the host finds both at run time,
// so that it also runs, with --render none, where neither exists.
#ifndef TOKA_HOST_RENDER_GL_H
#define TOKA_HOST_RENDER_GL_H

#define GL_GLEXT_PROTOTYPES 1  // declarations only, for the table's types
#include <GL/gl.h>
#include <GL/glext.h>

#include <string>

namespace toka_host {

// Every GL function the host calls, resolved once the context exists; all
// null while there is none.
#define TOKA_HOST_GL_FUNCTIONS(X)                                                           \
  X(ActiveTexture) X(AlphaFunc) X(Begin) X(BindBuffer) X(BindFramebuffer) X(BindTexture) X(BlendFunc)     \
  X(Clear) X(ClearColor) X(Color4f) X(ColorMask) X(DepthFunc)             \
  X(DepthMask) X(Disable) X(Enable) X(End) X(Flush) X(Frustum) X(GenTextures)              \
  X(GetString) X(LoadIdentity) X(MatrixMode) X(Ortho) X(PixelStorei)         \
  X(PopMatrix) X(PushMatrix) X(ReadPixels) X(Rotated) X(Scissor) X(TexCoord2f)              \
  X(TexEnvi) X(TexImage2D) X(TexParameteri) X(TexSubImage2D) X(Translated) X(UseProgram)         \
  X(Vertex2i) X(Viewport)

struct GLFunctions {
#define TOKA_HOST_GL_MEMBER(name) decltype(&gl##name) name = nullptr;
  TOKA_HOST_GL_FUNCTIONS(TOKA_HOST_GL_MEMBER)
#undef TOKA_HOST_GL_MEMBER
};
extern GLFunctions gGL;

// Makes the context current with a frame of the given size, once per
// process (a later call with another size only changes the frame). False
// with one line saying what is missing: no EGL library, no driver.
bool OpenRenderer(int width, int height, std::string& error);
// True while the context is current and the run draws: the host draws only
// then.
bool Rendering();
// A run that draws nothing (--render none) in a process that has a context.
void StopRendering();
// The context current again after another one was (a window's).
void MakeRendererCurrent();
// The driver's description, "VERSION | RENDERER".
std::string RendererName();

}  // namespace toka_host

#endif
