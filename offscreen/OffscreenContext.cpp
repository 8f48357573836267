#include "offscreen/OffscreenContext.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>

#define EGL_NO_X11
#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GL/gl.h>
#include <GL/glext.h>

namespace vellum {

namespace {

bool hasExtension(char const* list, char const* name) {
    std::size_t const length = std::strlen(name);
    for (char const* at = list; at && (at = std::strstr(at, name)); at += length) {
        bool const starts = at == list || at[-1] == ' ';
        bool const ends = at[length] == ' ' || at[length] == '\0';
        if (starts && ends) {
            return true;
        }
    }
    return false;
}

/// An entry point of EGL or GL. GL is fetched here, not linked: what the context does on its own account must
/// not pass through entry points that a program replaces.
template <class Function>
Function fetch(char const* name) {
    return reinterpret_cast<Function>(eglGetProcAddress(name));
}

constexpr char const* NO_DRIVER = "EGL finds no driver";

// == Displays ==

/// EGL has one display per platform and process, and eglTerminate ends it for all its users. So only the last
/// context of a display ends it.
class DisplayUsers {
public:
    static bool enter(EGLDisplay display) {
        std::lock_guard<std::mutex> const lock(_mutex());
        if (!eglInitialize(display, nullptr, nullptr)) {
            return false;
        }
        ++_counts()[display];
        return true;
    }

    static void leave(EGLDisplay display) {
        std::lock_guard<std::mutex> const lock(_mutex());
        if (--_counts()[display] == 0) {
            eglTerminate(display);
        }
    }

private:
    static std::mutex& _mutex() {
        static std::mutex mutex;
        return mutex;
    }

    static std::map<EGLDisplay, int>& _counts() {
        static std::map<EGLDisplay, int> counts;
        return counts;
    }
};

/// The displays to try, best first: Mesa's without a window system, the graphics devices (drivers that know
/// no surfaceless platform), the window system's.
std::vector<EGLDisplay> candidateDisplays() {
    std::vector<EGLDisplay> displays;
    auto const add = [&displays](EGLDisplay display) {
        if (display != EGL_NO_DISPLAY) {
            displays.push_back(display);
        }
    };

    char const* const extensions = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    auto const getPlatformDisplay = fetch<PFNEGLGETPLATFORMDISPLAYEXTPROC>("eglGetPlatformDisplayEXT");
    if (getPlatformDisplay && hasExtension(extensions, "EGL_MESA_platform_surfaceless")) {
        add(getPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr));
    }

    auto const queryDevices = fetch<PFNEGLQUERYDEVICESEXTPROC>("eglQueryDevicesEXT");
    bool const enumerates = hasExtension(extensions, "EGL_EXT_device_enumeration") ||
                            hasExtension(extensions, "EGL_EXT_device_base");
    if (getPlatformDisplay && queryDevices && enumerates &&
        hasExtension(extensions, "EGL_EXT_platform_device")) {
        EGLDeviceEXT devices[16];
        EGLint count = 0;
        if (queryDevices(16, devices, &count)) {
            for (EGLint i = 0; i < count; ++i) {
                add(getPlatformDisplay(EGL_PLATFORM_DEVICE_EXT, devices[i], nullptr));
            }
        }
    }

    add(eglGetDisplay(EGL_DEFAULT_DISPLAY));
    return displays;
}

// == Configurations ==

/// A configuration with the asked-for samples, or null.
EGLConfig findConfig(EGLDisplay display, int samples) {
    // clang-format off
    EGLint const wanted[] = {
        EGL_SURFACE_TYPE, EGL_PBUFFER_BIT,
        EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT,
        EGL_RED_SIZE, 8,
        EGL_GREEN_SIZE, 8,
        EGL_BLUE_SIZE, 8,
        EGL_ALPHA_SIZE, 8,
        EGL_DEPTH_SIZE, 24,
        EGL_STENCIL_SIZE, 8,
        EGL_SAMPLE_BUFFERS, samples > 1 ? 1 : 0,
        EGL_SAMPLES, samples > 1 ? samples : 0,
        EGL_NONE,
    };
    // clang-format on
    EGLConfig configs[64];
    EGLint count = 0;
    if (!eglChooseConfig(display, wanted, configs, 64, &count)) {
        return nullptr;
    }

    // EGL sorts deeper colors first (10 or 16 bits), which would change every picture.
    auto const isExact = [display](EGLConfig config) {
        for (EGLint const channel : {EGL_RED_SIZE, EGL_GREEN_SIZE, EGL_BLUE_SIZE, EGL_ALPHA_SIZE}) {
            EGLint bits = 0;
            eglGetConfigAttrib(display, config, channel, &bits);
            if (bits != 8) {
                return false;
            }
        }
        return true;
    };
    EGLConfig const* const end = configs + count;
    EGLConfig const* const found = std::find_if(static_cast<EGLConfig const*>(configs), end, isExact);
    return found == end ? nullptr : *found;
}

std::string textOf(OffscreenContext::Settings const& size) {
    return std::to_string(size.width) + " x " + std::to_string(size.height);
}

/// The sample counts to try, best first, ending with none.
std::vector<int> candidateSamples(int wanted) {
    std::vector<int> candidates;
    for (int samples = std::min(wanted, 64); samples > 1; samples /= 2) {
        candidates.push_back(samples);
    }
    candidates.push_back(0);
    return candidates;
}

}  // namespace

// == State ==

struct OffscreenContext::State {
    EGLDisplay display = EGL_NO_DISPLAY;
    EGLConfig config = nullptr;
    EGLContext context = EGL_NO_CONTEXT;
    EGLSurface surface = EGL_NO_SURFACE;
    int samples = 0;
    bool reportsErrors = false;
    std::vector<std::string> errors;
    bool isDisplayShared = false;  // with other contexts of this class, the last of which ends it

    // What was current before; only beside another context.
    EGLContext formerContext = EGL_NO_CONTEXT;
    EGLSurface formerDrawn = EGL_NO_SURFACE;
    EGLSurface formerRead = EGL_NO_SURFACE;

    State() = default;
    State(State const&) = delete;
    State& operator=(State const&) = delete;

    ~State() { close(); }

    /// Empty on success, else what the display lacks. On failure everything is released again.
    std::string open(EGLDisplay candidate, Settings const& settings);

    void close();
    bool makeCurrent();
    bool release();
    bool makeFormerCurrent();

private:
    std::string _create(Settings const& settings);

    // == The steps of _create(), each with what the display lacks, or nothing ==
    std::string _chooseConfig(Settings const& settings);
    std::string _createContext(Settings const& settings);
    std::string _createSurface(Settings const& settings);
    std::string _checkDriver(Settings const& settings);
    void _listenToErrors();

    static void GLAPIENTRY _onMessage(GLenum source, GLenum type, GLuint id, GLenum severity, GLsizei length,
                                      GLchar const* text, void const* state);
};

std::string OffscreenContext::State::open(EGLDisplay candidate, Settings const& settings) {
    // The display of a window is that of the window system's library, which ends it.
    isDisplayShared = !settings.isBesideCurrent;
    if (isDisplayShared && !DisplayUsers::enter(candidate)) {
        return NO_DRIVER;
    }
    display = candidate;

    std::string lack = _create(settings);
    if (!lack.empty()) {
        close();
    }
    return lack;
}

std::string OffscreenContext::State::_create(Settings const& settings) {
    if (!eglBindAPI(EGL_OPENGL_API)) {
        return "the driver has no desktop OpenGL";
    }
    using Step = std::string (State::*)(Settings const&);
    for (Step const step :
         {&State::_chooseConfig, &State::_createContext, &State::_createSurface, &State::_checkDriver}) {
        std::string lack = (this->*step)(settings);
        if (!lack.empty()) {
            return lack;
        }
    }
    if (settings.debug) {
        _listenToErrors();
    }
    fetch<decltype(&glClear)>("glClear")(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    return "";
}

std::string OffscreenContext::State::_chooseConfig(Settings const& settings) {
    for (int const candidate : candidateSamples(settings.samples)) {
        config = findConfig(display, candidate);
        if (config) {
            eglGetConfigAttrib(display, config, EGL_SAMPLES, &samples);
            return "";
        }
    }
    return "the driver has no off-screen buffer with 8 bits per color, 24 bits of depth and 8 of "
           "stencil";
}

std::string OffscreenContext::State::_createContext(Settings const& settings) {
    // Without attributes the driver gives its newest compatibility profile. A driver that knows no debug
    // context may still report errors in a plain one.
    if (settings.isBesideCurrent) {
        formerContext = eglGetCurrentContext();
        formerDrawn = eglGetCurrentSurface(EGL_DRAW);
        formerRead = eglGetCurrentSurface(EGL_READ);
    }
    EGLint const debug[] = {EGL_CONTEXT_OPENGL_DEBUG, EGL_TRUE, EGL_NONE};
    if (settings.debug) {
        context = eglCreateContext(display, config, formerContext, debug);
    }
    if (context == EGL_NO_CONTEXT) {
        context = eglCreateContext(display, config, formerContext, nullptr);
    }
    return context != EGL_NO_CONTEXT ? "" : "the driver makes no OpenGL context";
}

std::string OffscreenContext::State::_createSurface(Settings const& settings) {
    EGLint const extent[] = {EGL_WIDTH, settings.width, EGL_HEIGHT, settings.height, EGL_NONE};
    surface = eglCreatePbufferSurface(display, config, extent);
    if (surface == EGL_NO_SURFACE) {
        return "the driver makes no off-screen buffer of " + textOf(settings) + " pixels";
    }
    return makeCurrent() ? "" : "the driver does not make the OpenGL context current";
}

std::string OffscreenContext::State::_checkDriver(Settings const& settings) {
    auto const getString = fetch<decltype(&glGetString)>("glGetString");
    auto const getIntegerv = fetch<decltype(&glGetIntegerv)>("glGetIntegerv");
    auto const clear = fetch<decltype(&glClear)>("glClear");
    if (!getString || !getIntegerv || !clear || !getString(GL_VERSION)) {
        return "the driver's OpenGL does not answer";
    }
    // Some drivers make a buffer of any size and then draw into a part of it.
    GLint largest[2] = {0, 0};
    getIntegerv(GL_MAX_VIEWPORT_DIMS, largest);
    if (settings.width > largest[0] || settings.height > largest[1]) {
        return "the driver draws no picture of " + textOf(settings) + " pixels, the largest is " +
               std::to_string(largest[0]) + " x " + std::to_string(largest[1]);
    }
    return "";
}

void OffscreenContext::State::_listenToErrors() {
    auto const getString = fetch<decltype(&glGetString)>("glGetString");
    char const* const extensions = reinterpret_cast<char const*>(getString(GL_EXTENSIONS));
    auto const enable = fetch<decltype(&glEnable)>("glEnable");
    auto const setCallback = fetch<PFNGLDEBUGMESSAGECALLBACKPROC>("glDebugMessageCallback");
    if (!hasExtension(extensions, "GL_KHR_debug") || !enable || !setCallback) {
        return;
    }

    enable(GL_DEBUG_OUTPUT);
    enable(GL_DEBUG_OUTPUT_SYNCHRONOUS);  // the callback runs inside the faulty call, in its thread
    setCallback(&_onMessage, this);
    reportsErrors = true;
}

void GLAPIENTRY OffscreenContext::State::_onMessage(GLenum source, GLenum type, GLuint, GLenum, GLsizei,
                                                    GLchar const* text, void const* state) {
    // A shader that does not compile is reported as an error too, with another source; GL itself raises none.
    if (source != GL_DEBUG_SOURCE_API || type != GL_DEBUG_TYPE_ERROR) {
        return;
    }
    const_cast<State*>(static_cast<State const*>(state))->errors.emplace_back(text);
}

bool OffscreenContext::State::makeCurrent() {
    return eglBindAPI(EGL_OPENGL_API) && eglMakeCurrent(display, surface, surface, context);
}

bool OffscreenContext::State::release() {
    return eglBindAPI(EGL_OPENGL_API) && eglGetCurrentContext() == context &&
           eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
}

bool OffscreenContext::State::makeFormerCurrent() {
    return formerContext != EGL_NO_CONTEXT && eglBindAPI(EGL_OPENGL_API) &&
           eglMakeCurrent(display, formerDrawn, formerRead, formerContext);
}

void OffscreenContext::State::close() {
    if (display == EGL_NO_DISPLAY) {
        return;
    }
    if (context != EGL_NO_CONTEXT) {
        eglBindAPI(EGL_OPENGL_API);
        if (eglGetCurrentContext() == context && !makeFormerCurrent()) {
            release();
        }
        eglDestroyContext(display, context);
    }
    if (surface != EGL_NO_SURFACE) {
        eglDestroySurface(display, surface);
    }
    if (isDisplayShared) {
        DisplayUsers::leave(display);
    }

    display = EGL_NO_DISPLAY;
    context = EGL_NO_CONTEXT;
    surface = EGL_NO_SURFACE;
}

// == OffscreenContext ==

OffscreenContext::OffscreenContext(Settings const& settings) : settings(settings) {
    if (settings.width < 1 || settings.height < 1) {
        failure = "No OpenGL context: a picture of " + textOf(settings) + " pixels has no size.";
        return;
    }

    if (settings.isBesideCurrent && eglGetCurrentContext() == EGL_NO_CONTEXT) {
        failure = "No OpenGL context: there is none that it could be beside.";
        return;
    }
    std::string reasons;
    for (EGLDisplay display :
         settings.isBesideCurrent ? std::vector<EGLDisplay>{eglGetCurrentDisplay()} : candidateDisplays()) {
        auto state = std::make_unique<State>();
        std::string lack = state->open(display, settings);
        if (lack.empty()) {
            native = std::move(state);
            return;
        }
        // As a rule several displays lack the same thing; one that has no driver at all tells nothing new.
        if (lack != NO_DRIVER && reasons.find(lack) == std::string::npos) {
            reasons += (reasons.empty() ? "" : "; ") + lack;
        }
    }
    failure = "No OpenGL context: " + (reasons.empty() ? NO_DRIVER : reasons) + ".";
}

OffscreenContext::~OffscreenContext() = default;

bool OffscreenContext::isValid() const {
    return native != nullptr;
}

std::string const& OffscreenContext::error() const {
    return failure;
}

int OffscreenContext::width() const {
    return settings.width;
}

int OffscreenContext::height() const {
    return settings.height;
}

int OffscreenContext::samples() const {
    return native ? native->samples : 0;
}

bool OffscreenContext::makeCurrent() {
    return native && native->makeCurrent();
}

bool OffscreenContext::release() {
    return native && native->release();
}

bool OffscreenContext::makeFormerCurrent() {
    return native && native->makeFormerCurrent();
}

std::vector<unsigned char> OffscreenContext::readPixels() const {
    return readPixels(0, 0, settings.width, settings.height);
}

std::vector<unsigned char> OffscreenContext::readPixels(int left, int top, int width, int height) const {
    std::size_t const rowBytes = std::size_t(width) * 4;
    std::vector<unsigned char> pixels(rowBytes * std::size_t(height));
    if (!native) {
        return pixels;
    }

    auto const pushAttrib = fetch<decltype(&glPushAttrib)>("glPushAttrib");
    auto const popAttrib = fetch<decltype(&glPopAttrib)>("glPopAttrib");
    auto const pushClientAttrib = fetch<decltype(&glPushClientAttrib)>("glPushClientAttrib");
    auto const popClientAttrib = fetch<decltype(&glPopClientAttrib)>("glPopClientAttrib");
    auto const pixelStorei = fetch<decltype(&glPixelStorei)>("glPixelStorei");
    auto const pixelTransferf = fetch<decltype(&glPixelTransferf)>("glPixelTransferf");
    auto const readPixels = fetch<decltype(&glReadPixels)>("glReadPixels");

    pushAttrib(GL_PIXEL_MODE_BIT);
    pushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
    pixelStorei(GL_PACK_ALIGNMENT, 1);
    for (GLenum const skip : {GL_PACK_ROW_LENGTH, GL_PACK_SKIP_ROWS, GL_PACK_SKIP_PIXELS}) {
        pixelStorei(skip, 0);
    }
    for (GLenum const scale : {GL_RED_SCALE, GL_GREEN_SCALE, GL_BLUE_SCALE, GL_ALPHA_SCALE}) {
        pixelTransferf(scale, 1);
    }
    for (GLenum const bias : {GL_RED_BIAS, GL_GREEN_BIAS, GL_BLUE_BIAS, GL_ALPHA_BIAS}) {
        pixelTransferf(bias, 0);
    }
    // GL counts rows from the lowest.
    readPixels(left, settings.height - top - height, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    popClientAttrib();
    popAttrib();

    for (auto low = pixels.begin(), high = pixels.end() - std::ptrdiff_t(rowBytes); low < high;
         low += std::ptrdiff_t(rowBytes), high -= std::ptrdiff_t(rowBytes)) {
        std::swap_ranges(low, low + std::ptrdiff_t(rowBytes), high);
    }
    return pixels;
}

bool OffscreenContext::reportsErrors() const {
    return native && native->reportsErrors;
}

std::vector<std::string> OffscreenContext::takeErrors() {
    std::vector<std::string> errors;
    if (native) {
        errors.swap(native->errors);
    }
    return errors;
}

}  // namespace vellum
