// watch_window PROGRAM TITLE COLOR:COUNT...
//
// Starts a program on the current X display and waits until its window with this title shows at least COUNT pixels of
// each COLOR (rrggbb; "other" stands for all colors that are not named). The program must still run then and show the
// same after some more frames. It is asked to close its window, as by a click on the close button, and must end with 0.
// Exit status: 0 when all of this came true.

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds PATIENCE{60};  // software rendering on a busy machine
constexpr std::chrono::milliseconds PAUSE{100};
constexpr unsigned long OTHER = ~0UL;

struct Expectation {
    std::string text;
    unsigned long color;
    long least;
};

/// The window with this title at or below a window, or None.
Window find(Display* display, Window window, std::string const& title) {
    char* name = nullptr;
    bool isFound = false;
    if (XFetchName(display, window, &name) != 0 && name != nullptr) {
        isFound = title == name;
        XFree(name);
    }
    if (isFound) {
        return window;
    }
    Window root = None;
    Window parent = None;
    Window* children = nullptr;
    unsigned int count = 0;
    Window found = None;
    if (XQueryTree(display, window, &root, &parent, &children, &count) != 0) {
        for (unsigned int i = 0; i < count && found == None; ++i) {
            found = find(display, children[i], title);
        }
        if (children != nullptr) {
            XFree(children);
        }
    }
    return found;
}

/// How many pixels of the window have each color; empty where the window cannot be read yet.
std::map<unsigned long, long> colorsOf(Display* display, Window window) {
    std::map<unsigned long, long> counts;
    XWindowAttributes attributes;
    if (XGetWindowAttributes(display, window, &attributes) == 0 || attributes.map_state != IsViewable) {
        return counts;
    }
    XImage* const image = XGetImage(display, window, 0, 0, static_cast<unsigned int>(attributes.width),
                                    static_cast<unsigned int>(attributes.height), AllPlanes, ZPixmap);
    if (image == nullptr) {
        return counts;
    }
    for (int y = 0; y < image->height; ++y) {
        for (int x = 0; x < image->width; ++x) {
            ++counts[XGetPixel(image, x, y) & 0xFFFFFFUL];
        }
    }
    XDestroyImage(image);
    return counts;
}

/// The first expectation that is not met, in words; empty where all are.
std::string shortage(std::map<unsigned long, long> counts, std::vector<Expectation> const& expectations) {
    long others = 0;
    for (auto const& [color, count] : counts) {
        bool isNamed = false;
        for (Expectation const& expected : expectations) {
            isNamed = isNamed || expected.color == color;
        }
        others += isNamed ? 0 : count;
    }
    counts[OTHER] = others;
    for (Expectation const& expected : expectations) {
        if (counts[expected.color] < expected.least) {
            return std::to_string(counts[expected.color]) + " pixels instead of " + expected.text;
        }
    }
    return "";
}

bool hasEnded(pid_t program, int& status) {
    return waitpid(program, &status, WNOHANG) == program;
}

int fail(pid_t program, std::string const& message) {
    std::fprintf(stderr, "watch_window: %s\n", message.c_str());
    kill(program, SIGKILL);
    return 1;
}

/// Asks the program to close its window, in the words of window managers.
void requestClose(Display* display, Window window) {
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = XInternAtom(display, "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(XInternAtom(display, "WM_DELETE_WINDOW", False));
    event.xclient.data.l[1] = CurrentTime;
    XSendEvent(display, window, False, NoEventMask, &event);
    XFlush(display);
}

int watch(Display* display, pid_t program, std::string const& title,
          std::vector<Expectation> const& expectations) {
    int status = 0;
    auto const deadline = Clock::now() + PATIENCE;
    std::string missing = "no window '" + title + "'";
    Window window = None;
    // Seen twice, with a pause between: the program goes on drawing.
    for (int seen = 0; seen < 2;) {
        if (hasEnded(program, status)) {
            return fail(program, "the program has ended by itself");
        }
        if (Clock::now() > deadline) {
            return fail(program, missing);
        }
        window = find(display, DefaultRootWindow(display), title);
        if (window != None) {
            missing = shortage(colorsOf(display, window), expectations);
            seen += missing.empty() ? 1 : 0;
        }
        std::this_thread::sleep_for(PAUSE);
    }
    requestClose(display, window);
    while (!hasEnded(program, status)) {
        if (Clock::now() > deadline) {
            return fail(program, "the program goes on after its window was closed");
        }
        std::this_thread::sleep_for(PAUSE);
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        return fail(program, "the program ended with status " + std::to_string(status));
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    Display* const display = XOpenDisplay(nullptr);
    if (argc < 4 || display == nullptr) {
        std::fprintf(stderr, "watch_window PROGRAM TITLE COLOR:COUNT..., with an X display\n");
        return 2;
    }
    // A window may go away between two requests.
    XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });
    std::vector<Expectation> expectations;
    for (int i = 3; i < argc; ++i) {
        std::string const text = argv[i];
        std::size_t const middle = text.find(':');
        std::string const color = text.substr(0, middle);
        expectations.push_back({text, color == "other" ? OTHER : std::stoul(color, nullptr, 16),
                                std::stol(text.substr(middle + 1))});
    }
    pid_t const program = fork();
    if (program == 0) {
        execl(argv[1], argv[1], nullptr);
        _exit(127);
    }
    int const status = watch(display, program, argv[2], expectations);
    XCloseDisplay(display);
    return status;
}
