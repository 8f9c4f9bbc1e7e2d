// The offscreen context. Mesa's software rasteriser (llvmpipe) is chosen even
// where a graphics card exists, so that the same run gives the same pixels
// on every machine; its pictures do not depend on its number of threads.
// The context lives as long as the process: terminating the display would
// unload the driver with allocations of its own still held, which leak
// checkers then report against the host.
#include "host/render/gl.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

namespace toka_host {

GLFunctions gGL;

namespace {

struct EGLFunctions {
  PFNEGLGETPROCADDRESSPROC GetProcAddress = nullptr;
  PFNEGLGETPLATFORMDISPLAYEXTPROC GetPlatformDisplayEXT = nullptr;
  PFNEGLINITIALIZEPROC Initialize = nullptr;
  PFNEGLBINDAPIPROC BindAPI = nullptr;
  PFNEGLCHOOSECONFIGPROC ChooseConfig = nullptr;
  PFNEGLCREATEPBUFFERSURFACEPROC CreatePbufferSurface = nullptr;
  PFNEGLDESTROYSURFACEPROC DestroySurface = nullptr;
  PFNEGLCREATECONTEXTPROC CreateContext = nullptr;
  PFNEGLMAKECURRENTPROC MakeCurrent = nullptr;
  PFNEGLGETERRORPROC GetError = nullptr;
};

EGLFunctions gEGL;
void* gEGLLibrary = nullptr;
EGLDisplay gDisplay = EGL_NO_DISPLAY;
EGLConfig gConfigEGL = nullptr;
EGLContext gContext = EGL_NO_CONTEXT;
EGLSurface gSurface = EGL_NO_SURFACE;
int gWidth = 0, gHeight = 0;
bool gDrawing = false;

const char kSuggestion[] = "; run with --render none to run without pictures";

std::string EGLErrorText(const char* call) {
  char text[96];
  std::snprintf(text, sizeof text, "%s failed with EGL error 0x%04X", call,
                gEGL.GetError ? (unsigned)gEGL.GetError() : 0u);
  return text;
}

bool LoadEGL(std::string& error) {
  gEGLLibrary = dlopen("libEGL.so.1", RTLD_NOW | RTLD_LOCAL);
  if (!gEGLLibrary) {
    error = std::string("cannot draw: no EGL library (") + dlerror() + ")" + kSuggestion;
    return false;
  }
  gEGL.GetProcAddress = (PFNEGLGETPROCADDRESSPROC)dlsym(gEGLLibrary, "eglGetProcAddress");
  if (!gEGL.GetProcAddress) {
    error = std::string("cannot draw: libEGL.so.1 lacks eglGetProcAddress") + kSuggestion;
    return false;
  }
  auto find = [](const char* name) { return (void*)gEGL.GetProcAddress(name); };
  gEGL.GetPlatformDisplayEXT = (PFNEGLGETPLATFORMDISPLAYEXTPROC)find("eglGetPlatformDisplayEXT");
  gEGL.Initialize = (PFNEGLINITIALIZEPROC)find("eglInitialize");
  gEGL.BindAPI = (PFNEGLBINDAPIPROC)find("eglBindAPI");
  gEGL.ChooseConfig = (PFNEGLCHOOSECONFIGPROC)find("eglChooseConfig");
  gEGL.CreatePbufferSurface = (PFNEGLCREATEPBUFFERSURFACEPROC)find("eglCreatePbufferSurface");
  gEGL.DestroySurface = (PFNEGLDESTROYSURFACEPROC)find("eglDestroySurface");
  gEGL.CreateContext = (PFNEGLCREATECONTEXTPROC)find("eglCreateContext");
  gEGL.MakeCurrent = (PFNEGLMAKECURRENTPROC)find("eglMakeCurrent");
  gEGL.GetError = (PFNEGLGETERRORPROC)find("eglGetError");
  if (!gEGL.GetPlatformDisplayEXT || !gEGL.Initialize || !gEGL.BindAPI || !gEGL.ChooseConfig ||
      !gEGL.CreatePbufferSurface || !gEGL.DestroySurface || !gEGL.CreateContext ||
      !gEGL.MakeCurrent || !gEGL.GetError) {
    error = std::string("cannot draw: the EGL library lacks the surfaceless platform's functions") +
            kSuggestion;
    return false;
  }
  return true;
}

// The display, a config with depth for the 3-D phases, and a compatibility
// context: plugins draw with fixed-function GL.
bool CreateContext(std::string& error) {
  gDisplay = gEGL.GetPlatformDisplayEXT(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
  EGLint major = 0, minor = 0;
  if (gDisplay == EGL_NO_DISPLAY || !gEGL.Initialize(gDisplay, &major, &minor)) {
    error = "cannot draw: EGL finds no OpenGL driver (" + EGLErrorText("eglInitialize") + ")" +
            kSuggestion;
    return false;
  }
  const EGLint attributes[] = {EGL_SURFACE_TYPE, EGL_PBUFFER_BIT, EGL_RENDERABLE_TYPE,
                               EGL_OPENGL_BIT,   EGL_RED_SIZE,    8,
                               EGL_GREEN_SIZE,   8,               EGL_BLUE_SIZE,
                               8,                EGL_ALPHA_SIZE,  8,
                               EGL_DEPTH_SIZE,   24,              EGL_NONE};
  EGLint count = 0;
  if (!gEGL.BindAPI(EGL_OPENGL_API) ||
      !gEGL.ChooseConfig(gDisplay, attributes, &gConfigEGL, 1, &count) || count < 1) {
    error = "cannot draw: the OpenGL driver offers no offscreen frame with depth (" +
            EGLErrorText("eglChooseConfig") + ")" + kSuggestion;
    return false;
  }
  gContext = gEGL.CreateContext(gDisplay, gConfigEGL, EGL_NO_CONTEXT, nullptr);
  if (gContext == EGL_NO_CONTEXT) {
    error = "cannot draw: no OpenGL context (" + EGLErrorText("eglCreateContext") + ")" +
            kSuggestion;
    return false;
  }
  return true;
}

bool CreateFrame(int width, int height, std::string& error) {
  if (gSurface != EGL_NO_SURFACE) {
    gEGL.MakeCurrent(gDisplay, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    gEGL.DestroySurface(gDisplay, gSurface);
  }
  const EGLint size[] = {EGL_WIDTH, width, EGL_HEIGHT, height, EGL_NONE};
  gSurface = gEGL.CreatePbufferSurface(gDisplay, gConfigEGL, size);
  if (gSurface == EGL_NO_SURFACE || !gEGL.MakeCurrent(gDisplay, gSurface, gSurface, gContext)) {
    error = "cannot draw: no offscreen frame of " + std::to_string(width) + "x" +
            std::to_string(height) + " (" + EGLErrorText("eglCreatePbufferSurface") + ")" +
            kSuggestion;
    gSurface = EGL_NO_SURFACE;
    return false;
  }
  gWidth = width;
  gHeight = height;
  return true;
}

bool LoadGL(std::string& error) {
#define TOKA_HOST_GL_LOAD(name)                                                      \
  gGL.name = (decltype(gGL.name))gEGL.GetProcAddress("gl" #name);                    \
  if (!gGL.name) {                                                                    \
    error = std::string("cannot draw: the OpenGL driver lacks gl" #name) + kSuggestion; \
    return false;                                                                     \
  }
  TOKA_HOST_GL_FUNCTIONS(TOKA_HOST_GL_LOAD)
#undef TOKA_HOST_GL_LOAD
  return true;
}

}  // namespace

bool OpenRenderer(int width, int height, std::string& error) {
  if (Rendering() && width == gWidth && height == gHeight) return true;
  if (gContext == EGL_NO_CONTEXT) {
    // A graphics card's driver would give pixels of its own.
    setenv("LIBGL_ALWAYS_SOFTWARE", "1", 0);
    static bool loaded = false;
    if (!loaded && !(loaded = LoadEGL(error))) return false;
    if (!CreateContext(error)) return false;
  }
  if (!(gSurface != EGL_NO_SURFACE && width == gWidth && height == gHeight) &&
      !CreateFrame(width, height, error))
    return false;
  if (!gGL.Begin && !LoadGL(error)) return false;
  gDrawing = true;
  return true;
}

bool Rendering() { return gDrawing; }

void StopRendering() { gDrawing = false; }

void MakeRendererCurrent() {
  if (gSurface != EGL_NO_SURFACE) gEGL.MakeCurrent(gDisplay, gSurface, gSurface, gContext);
}

std::string RendererName() {
  if (!Rendering()) return "none";
  return std::string((const char*)gGL.GetString(GL_VERSION)) + " | " +
         (const char*)gGL.GetString(GL_RENDERER);
}

}  // namespace toka_host
