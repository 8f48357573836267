// watch_window [--save FILE] [--screen FILE] [--drag X,Y,X,Y] TITLE COLOR:COUNT... -- PROGRAM ARGUMENT...
//
// Starts a program on the current X display and waits until its window with this title shows at least COUNT
// pixels of each COLOR: rrggbb; "other" stands for all colors that are not named. "kinds" counts the
// different colors instead. The program must still run then and show the same after some more frames. With
// --drag the mouse then presses the left button at the first point of the window, moves to the second and
// releases it; with --save the window's picture is written as a PNG file, with --screen that of the whole
// screen. The program is asked to close its window, as by a click on the close button, and must end with 0.
// Exit status: 0 when all of this came true.

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <png.h>

#include <algorithm>
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
constexpr int LOOKS_PER_DRAG = 50;
constexpr unsigned long OTHER = ~0UL;
constexpr unsigned long KINDS = ~0UL - 1;

struct Expectation {
    std::string text;
    unsigned long color;
    long least;
};

struct Order {
    std::string savePath;    // empty: no picture is saved
    std::string screenPath;  // empty: none of the screen
    std::vector<int> drag;   // from x, y to x, y; empty: no drag
    std::string title;
    std::vector<Expectation> expectations;
    std::vector<char*> program;  // with its arguments and a null at the end
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

/// The picture of a window, top row first.
struct Picture {
    unsigned int width = 0;  // 0 where the window cannot be read yet
    unsigned int height = 0;
    std::vector<unsigned long> pixels = {};  // 0xrrggbb
};

Picture pictureOf(Display* display, Window window) {
    Picture picture;
    XWindowAttributes attributes;
    if (XGetWindowAttributes(display, window, &attributes) == 0 || attributes.map_state != IsViewable) {
        return picture;
    }
    XImage* const image = XGetImage(display, window, 0, 0, static_cast<unsigned int>(attributes.width),
                                    static_cast<unsigned int>(attributes.height), AllPlanes, ZPixmap);
    if (image == nullptr) {
        return picture;
    }
    picture.width = static_cast<unsigned int>(image->width);
    picture.height = static_cast<unsigned int>(image->height);
    for (int y = 0; y < image->height; ++y) {
        for (int x = 0; x < image->width; ++x) {
            picture.pixels.push_back(XGetPixel(image, x, y) & 0xFFFFFFUL);
        }
    }
    XDestroyImage(image);
    return picture;
}

/// \return false when the file cannot be written.
bool save(Picture const& picture, std::string const& path) {
    std::vector<unsigned char> bytes;
    for (unsigned long const pixel : picture.pixels) {
        for (unsigned int const shift : {16U, 8U, 0U}) {
            bytes.push_back(static_cast<unsigned char>(pixel >> shift & 0xFFU));
        }
    }
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = picture.width;
    image.height = picture.height;
    image.format = PNG_FORMAT_RGB;
    return png_image_write_to_file(&image, path.c_str(), 0, bytes.data(), 0, nullptr) != 0;
}

/// How many pixels of the picture have each color.
std::map<unsigned long, long> colorsOf(Picture const& picture) {
    std::map<unsigned long, long> counts;
    for (unsigned long const pixel : picture.pixels) {
        ++counts[pixel];
    }
    return counts;
}

/// The first expectation that is not met, in words; empty where all are.
std::string shortage(std::map<unsigned long, long> counts, std::vector<Expectation> const& expectations) {
    auto const kinds = static_cast<long>(counts.size());
    long others = 0;
    for (auto const& [color, count] : counts) {
        bool isNamed = false;
        for (Expectation const& expected : expectations) {
            isNamed = isNamed || expected.color == color;
        }
        others += isNamed ? 0 : count;
    }
    counts[OTHER] = others;
    counts[KINDS] = kinds;
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

/// Tells the program about the left mouse button, where the mouse is.
void sendButton(Display* display, Window window, int type) {
    XEvent event{};
    event.type = type;
    event.xbutton.window = window;
    event.xbutton.button = Button1;
    XSendEvent(display, window, False, NoEventMask, &event);
    XFlush(display);
}

/// Moves the mouse to a point of the window and lets the program see it there.
void moveMouse(Display* display, Window window, int x, int y) {
    XWarpPointer(display, None, window, 0, 0, 0, 0, x, y);
    XFlush(display);
    std::this_thread::sleep_for(10 * PAUSE);
}

void drag(Display* display, Window window, std::vector<int> const& points) {
    moveMouse(display, window, points[0], points[1]);
    sendButton(display, window, ButtonPress);
    std::this_thread::sleep_for(10 * PAUSE);
    moveMouse(display, window, points[2], points[3]);
    sendButton(display, window, ButtonRelease);
}

int watch(Display* display, pid_t program, Order const& order) {
    int status = 0;
    auto const deadline = Clock::now() + PATIENCE;
    std::string missing = "no window '" + order.title + "'";
    Window window = None;
    Picture picture;
    int looks = 0;
    // Seen twice, with a pause between: the program goes on drawing.
    for (int seen = 0; seen < 2;) {
        if (hasEnded(program, status)) {
            return fail(program, "the program has ended by itself");
        }
        if (Clock::now() > deadline) {
            return fail(program, missing);
        }
        window = find(display, DefaultRootWindow(display), order.title);
        if (window != None) {
            picture = pictureOf(display, window);
            // A busy program may miss a part of a drag, and then shows what it showed before: once more.
            if (!order.drag.empty() && picture.width != 0 && looks++ % LOOKS_PER_DRAG == 0) {
                drag(display, window, order.drag);
                picture = pictureOf(display, window);
            }
            missing = shortage(colorsOf(picture), order.expectations);
            seen += missing.empty() ? 1 : 0;
        }
        std::this_thread::sleep_for(PAUSE);
    }
    if (!order.savePath.empty() && !save(picture, order.savePath)) {
        return fail(program, order.savePath + " cannot be written");
    }
    if (!order.screenPath.empty() &&
        !save(pictureOf(display, DefaultRootWindow(display)), order.screenPath)) {
        return fail(program, order.screenPath + " cannot be written");
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
    std::printf("watch_window: all was shown\n");
    return 0;
}

/// The parts of a text between commas, as numbers.
std::vector<int> numbersOf(std::string const& text) {
    std::vector<int> numbers;
    for (std::size_t begin = 0; begin <= text.size();) {
        std::size_t const end = std::min(text.find(',', begin), text.size());
        numbers.push_back(std::stoi(text.substr(begin, end - begin)));
        begin = end + 1;
    }
    return numbers;
}

Expectation expectationOf(std::string const& text) {
    std::size_t const middle = text.find(':');
    std::string const color = text.substr(0, middle);
    unsigned long const number = color == "other"   ? OTHER
                                 : color == "kinds" ? KINDS
                                                    : std::stoul(color, nullptr, 16);
    return {text, number, std::stol(text.substr(middle + 1))};
}

Order orderOf(int argc, char** argv) {
    Order order;
    int i = 1;
    for (; i + 1 < argc && std::string(argv[i]).rfind("--", 0) == 0; i += 2) {
        std::string const option = argv[i];
        if (option == "--save") {
            order.savePath = argv[i + 1];
        } else if (option == "--screen") {
            order.screenPath = argv[i + 1];
        } else {
            order.drag = numbersOf(argv[i + 1]);
        }
    }
    if (i < argc) {
        order.title = argv[i++];
    }
    for (; i < argc && std::string(argv[i]) != "--"; ++i) {
        order.expectations.push_back(expectationOf(argv[i]));
    }
    for (++i; i < argc; ++i) {
        order.program.push_back(argv[i]);
    }
    order.program.push_back(nullptr);
    return order;
}

}  // namespace

int main(int argc, char** argv) {
    Display* const display = XOpenDisplay(nullptr);
    Order const order = orderOf(argc, argv);
    if (order.expectations.empty() || order.program.size() < 2 || display == nullptr) {
        std::fprintf(stderr, "watch_window TITLE COLOR:COUNT... -- PROGRAM..., with an X display\n");
        return 2;
    }
    // A window may go away between two requests.
    XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });
    pid_t const program = fork();
    if (program == 0) {
        execv(order.program[0], order.program.data());
        _exit(127);
    }
    int const status = watch(display, program, order);
    XCloseDisplay(display);
    return status;
}
