#include "tests/viewport/window/WindowDriver.h"

#include "tests/viewport/program/program_runner.h"
#include "tests/viewport/window/TextFinder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>
#include <thread>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

using vellum::viewport::Picture;
using vellum::viewport::Pixel;

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds PATIENCE{40};  // software rendering on a busy machine
constexpr std::chrono::milliseconds PAUSE{10};
// The picture gets all its pixels 150 ms after the last change.
constexpr std::chrono::milliseconds CALM{250};
// As long as this a program waits between two steps of the same work, for the X server.
constexpr std::chrono::milliseconds TAKEN{30};
// One that goes on drawing, such as while it loads, has taken in what was done by then.
constexpr std::chrono::milliseconds LONGEST_TAKEN{300};

void sleep() {
    std::this_thread::sleep_for(PAUSE);
}

/// What the threads of a process have used of the processors, nanoseconds; nothing while one of them runs, or
/// waits for a processor.
std::optional<unsigned long long> usedAtRest(pid_t process) {
    unsigned long long sum = 0;
    std::error_code gone;
    for (std::filesystem::directory_iterator thread("/proc/" + std::to_string(process) + "/task", gone), end;
         !gone && thread != end; thread.increment(gone)) {
        std::string text;
        std::getline(std::ifstream(thread->path() / "stat"), text);
        // After the name, which may hold blanks.
        std::size_t const name = text.rfind(')');
        if (name != std::string::npos && text.compare(name, 3, ") R") == 0) {
            return std::nullopt;
        }
        unsigned long long used = 0;
        std::ifstream(thread->path() / "schedstat") >> used;
        sum += used;
    }
    return sum;
}

/// A connection to the server of the tests, or null. One server is for all tests of the process, and a server
/// whose last client has left starts anew and refuses connections meanwhile: the first connection stays open,
/// and a refusal is not final.
Display* connect() {
    auto const opened = [] {
        auto const deadline = Clock::now() + PATIENCE;
        Display* display = XOpenDisplay(nullptr);
        while (display == nullptr && std::getenv("DISPLAY") != nullptr && Clock::now() < deadline) {
            sleep();
            display = XOpenDisplay(nullptr);
        }
        return display;
    };
    static Display* const kept = opened();
    return kept == nullptr ? nullptr : opened();
}

}  // namespace

struct WindowDriver::Screen {
    Display* display = nullptr;
    Window window = None;

    ~Screen() {
        if (display != nullptr) {
            XCloseDisplay(display);
        }
    }

    KeyCode code(std::string const& key) const {
        return XKeysymToKeycode(display, XStringToKeysym(key.c_str()));
    }

    Atom atom(char const* name) const { return XInternAtom(display, name, False); }

    /// The window of a process at or below another one, or None.
    Window find(Window below, pid_t process) const {
        Window root = None;
        Window parent = None;
        Window* children = nullptr;
        unsigned int count = 0;
        Window found = belongsTo(below, process) ? below : None;
        if (found == None && XQueryTree(display, below, &root, &parent, &children, &count) != 0) {
            for (unsigned int i = 0; i < count && found == None; ++i) {
                found = find(children[i], process);
            }
            if (children != nullptr) {
                XFree(children);
            }
        }
        return found;
    }

    bool belongsTo(Window candidate, pid_t process) const {
        Atom type = None;
        int format = 0;
        unsigned long count = 0;
        unsigned long left = 0;
        unsigned char* data = nullptr;
        bool isFound = false;
        if (XGetWindowProperty(display, candidate, atom("_NET_WM_PID"), 0, 1, False, XA_CARDINAL, &type,
                               &format, &count, &left, &data) == Success &&
            data != nullptr) {
            XWindowAttributes facts{};
            XGetWindowAttributes(display, candidate, &facts);
            isFound = count == 1 &&
                      *reinterpret_cast<unsigned long*>(data) == static_cast<unsigned long>(process) &&
                      facts.map_state == IsViewable;
            XFree(data);
        }
        return isFound;
    }

    void send(Atom message, std::array<long, 5> const& data, Window source) const {
        XEvent event{};
        event.xclient.type = ClientMessage;
        event.xclient.window = window;
        event.xclient.message_type = message;
        event.xclient.format = 32;
        event.xclient.data.l[0] = static_cast<long>(source);
        for (std::size_t i = 1; i < data.size(); ++i) {
            event.xclient.data.l[i] = data[i];
        }
        XSendEvent(display, window, False, NoEventMask, &event);
        XFlush(display);
    }
};

WindowDriver::WindowDriver(std::vector<std::string> const& arguments,
                           std::vector<std::string> const& environment, std::string const& folder)
    : screen(std::make_unique<Screen>()) {
    // A window may go away between two requests.
    XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });
    screen->display = connect();
    program = fork();
    if (program == 0) {
        for (std::string const& setting : environment) {
            std::size_t const middle = setting.find('=');
            setenv(setting.substr(0, middle).c_str(), setting.substr(middle + 1).c_str(), 1);
        }
        std::vector<std::string> words{VL_VIEWPORT_PROGRAM};
        words.insert(words.end(), arguments.begin(), arguments.end());
        std::vector<char*> pointers;
        for (std::string& word : words) {
            pointers.push_back(word.data());
        }
        pointers.push_back(nullptr);
        if (chdir(folder.c_str()) != 0) {
            _exit(127);
        }
        execv(VL_VIEWPORT_PROGRAM, pointers.data());
        _exit(127);
    }
    auto const deadline = Clock::now() + PATIENCE;
    while (screen->display != nullptr && screen->window == None && Clock::now() < deadline) {
        screen->window = screen->find(DefaultRootWindow(screen->display), program);
        int status = 0;
        if (waitpid(program, &status, WNOHANG) == program) {
            program = 0;
            return;
        }
        sleep();
    }
    if (isOpen()) {
        // There is no window manager that would do it.
        XSetInputFocus(screen->display, screen->window, RevertToParent, CurrentTime);
        XFlush(screen->display);
    }
}

WindowDriver::~WindowDriver() {
    if (program != 0) {
        kill(program, SIGKILL);
        waitpid(program, nullptr, 0);
    }
}

bool WindowDriver::isOpen() const {
    return screen->window != None;
}

// == What is seen ==

Picture WindowDriver::look() const {
    Picture picture;
    XWindowAttributes facts{};
    if (!isOpen() || XGetWindowAttributes(screen->display, screen->window, &facts) == 0) {
        return picture;
    }
    XImage* const image =
        XGetImage(screen->display, screen->window, 0, 0, static_cast<unsigned int>(facts.width),
                  static_cast<unsigned int>(facts.height), AllPlanes, ZPixmap);
    if (image == nullptr || image->bits_per_pixel != 32 || image->byte_order != LSBFirst) {
        return picture;
    }
    picture.width = facts.width;
    picture.height = facts.height;
    picture.pixels.reserve(4 * static_cast<std::size_t>(facts.width) *
                           static_cast<std::size_t>(facts.height));
    // Bytes are blue, green, red and one more, as servers of today have them.
    for (int y = 0; y < facts.height; ++y) {
        auto const* pixel =
            reinterpret_cast<unsigned char const*>(image->data) +
            static_cast<std::ptrdiff_t>(y) * static_cast<std::ptrdiff_t>(image->bytes_per_line);
        for (int x = 0; x < facts.width; ++x, pixel += 4) {
            picture.pixels.insert(picture.pixels.end(), {pixel[2], pixel[1], pixel[0], 255});
        }
    }
    XDestroyImage(image);
    return picture;
}

Picture WindowDriver::settled() const {
    auto const deadline = Clock::now() + PATIENCE;
    Picture picture;
    bool isSame = false;
    while (!isSame && Clock::now() < deadline) {
        while (!_rests(CALM) && Clock::now() < deadline) {
            sleep();
        }
        Picture next = look();
        isSame = next.pixels == picture.pixels;
        picture = std::move(next);
        // Where nothing was done between the two looks, nothing can have changed.
        isSame = isSame || _rests(TAKEN);
    }
    return picture;
}

bool WindowDriver::_rests(std::chrono::milliseconds duration) const {
    XSync(screen->display, False);
    std::optional<unsigned long long> const before = usedAtRest(program);
    auto const end = Clock::now() + duration;
    while (before && Clock::now() < end) {
        sleep();
        // The server has passed on everything when it answers.
        XSync(screen->display, False);
        if (usedAtRest(program) != before) {
            return false;
        }
    }
    return before.has_value();
}

void WindowDriver::_waitUntilTaken() const {
    auto const deadline = Clock::now() + LONGEST_TAKEN;
    while (!_rests(TAKEN) && Clock::now() < deadline) {
        sleep();
    }
}

bool WindowDriver::waitUntil(std::function<bool(Picture const&)> const& condition) const {
    auto const deadline = Clock::now() + PATIENCE;
    while (Clock::now() < deadline) {
        if (condition(look())) {
            return true;
        }
        sleep();
    }
    return false;
}

WindowDriver::Point WindowDriver::find(std::string const& text, Point after) const {
    std::optional<Point> found;
    TextFinder const finder(text);
    waitUntil([&](Picture const& seen) {
        std::optional<Pixel> const at = finder.find(seen, {after.x, after.y});
        found = at ? std::optional<Point>({at->x, at->y}) : std::nullopt;
        return found.has_value();
    });
    EXPECT_TRUE(found) << '"' << text << "\" is not seen";
    return found.value_or(Point{0, 0});
}

// == What is done ==

void WindowDriver::move(Point to) {
    Window child = None;
    int x = 0;
    int y = 0;
    XTranslateCoordinates(screen->display, screen->window, DefaultRootWindow(screen->display), to.x, to.y, &x,
                          &y, &child);
    XTestFakeMotionEvent(screen->display, -1, x, y, CurrentTime);
    _waitUntilTaken();
}

void WindowDriver::press(unsigned int button) {
    XTestFakeButtonEvent(screen->display, button, True, CurrentTime);
    _waitUntilTaken();
}

void WindowDriver::release(unsigned int button) {
    XTestFakeButtonEvent(screen->display, button, False, CurrentTime);
    _waitUntilTaken();
}

void WindowDriver::click(unsigned int button, Point at) {
    move(at);
    press(button);
    release(button);
}

void WindowDriver::drag(unsigned int button, Point from, Point to) {
    move(from);
    press(button);
    move({(from.x + to.x) / 2, (from.y + to.y) / 2});
    move(to);
    release(button);
}

void WindowDriver::turnWheel(int steps, Point at) {
    move(at);
    for (int i = 0; i < std::abs(steps); ++i) {
        click(steps > 0 ? Button4 : Button5, at);
    }
}

void WindowDriver::hold(std::string const& key) {
    XTestFakeKeyEvent(screen->display, screen->code(key), True, CurrentTime);
    _waitUntilTaken();
}

void WindowDriver::letGo(std::string const& key) {
    XTestFakeKeyEvent(screen->display, screen->code(key), False, CurrentTime);
    _waitUntilTaken();
}

void WindowDriver::type(std::vector<std::string> const& keys) {
    for (std::string const& key : keys) {
        XTestFakeKeyEvent(screen->display, screen->code(key), True, CurrentTime);
    }
    // The interface looks at what is down when it draws.
    _waitUntilTaken();
    for (auto key = keys.rbegin(); key != keys.rend(); ++key) {
        XTestFakeKeyEvent(screen->display, screen->code(*key), False, CurrentTime);
    }
    _waitUntilTaken();
}

void WindowDriver::write(std::string const& text) {
    for (char const letter : text) {
        std::string const name = letter == '.' ? "period" : letter == '-' ? "minus" : std::string(1, letter);
        XTestFakeKeyEvent(screen->display, screen->code(name), True, CurrentTime);
        XTestFakeKeyEvent(screen->display, screen->code(name), False, CurrentTime);
    }
    _waitUntilTaken();
}

void WindowDriver::resize(int width, int height) {
    XResizeWindow(screen->display, screen->window, static_cast<unsigned int>(width),
                  static_cast<unsigned int>(height));
    XFlush(screen->display);
    waitUntil([&](Picture const& picture) { return picture.width == width && picture.height == height; });
    _waitUntilTaken();
}

/// In the protocol of drag and drop, version 5, in which this is the source.
void WindowDriver::drop(std::vector<std::string> const& files) {
    Display* const display = screen->display;
    Window const source = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 1, 1, 0, 0, 0);
    XSetSelectionOwner(display, screen->atom("XdndSelection"), source, CurrentTime);
    std::string list;
    for (std::string const& file : files) {
        list += "file://" + file + "\r\n";
    }
    Picture const seen = look();
    Window child = None;
    int x = 0;
    int y = 0;
    XTranslateCoordinates(display, screen->window, DefaultRootWindow(display), seen.width / 2,
                          seen.height / 2, &x, &y, &child);
    constexpr long VERSION = 5;
    screen->send(screen->atom("XdndEnter"),
                 {0, VERSION << 24, static_cast<long>(screen->atom("text/uri-list")), 0, 0}, source);
    screen->send(screen->atom("XdndPosition"),
                 {0, 0, (static_cast<long>(x) << 16) | y, CurrentTime,
                  static_cast<long>(screen->atom("XdndActionCopy"))},
                 source);
    auto const deadline = Clock::now() + PATIENCE;
    bool isFinished = false;
    while (!isFinished && Clock::now() < deadline) {
        if (XPending(display) == 0) {
            sleep();
            continue;
        }
        XEvent event{};
        XNextEvent(display, &event);
        if (event.type == ClientMessage && event.xclient.message_type == screen->atom("XdndStatus")) {
            screen->send(screen->atom("XdndDrop"), {0, 0, CurrentTime, 0, 0}, source);
        } else if (event.type == ClientMessage &&
                   event.xclient.message_type == screen->atom("XdndFinished")) {
            isFinished = true;
        } else if (event.type == SelectionRequest) {
            XSelectionRequestEvent const& request = event.xselectionrequest;
            XChangeProperty(display, request.requestor, request.property, request.target, 8, PropModeReplace,
                            reinterpret_cast<unsigned char const*>(list.data()),
                            static_cast<int>(list.size()));
            XEvent answer{};
            answer.xselection.type = SelectionNotify;
            answer.xselection.requestor = request.requestor;
            answer.xselection.selection = request.selection;
            answer.xselection.target = request.target;
            answer.xselection.property = request.property;
            answer.xselection.time = request.time;
            XSendEvent(display, request.requestor, False, NoEventMask, &answer);
            XFlush(display);
        }
    }
    XDestroyWindow(display, source);
    XFlush(display);
}

// == What it costs ==

double WindowDriver::processorTime() const {
    std::ifstream file("/proc/" + std::to_string(program) + "/stat");
    std::string text;
    std::getline(file, text);
    // After the name, which may hold blanks; user time is the twelfth word from there.
    std::istringstream words(text.substr(std::min(text.size(), text.rfind(')') + 1)));
    std::string word;
    for (int i = 0; i < 11; ++i) {
        words >> word;
    }
    double user = 0;
    double system = 0;
    words >> user >> system;
    return (user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

std::size_t WindowDriver::memory() const {
    std::ifstream file("/proc/" + std::to_string(program) + "/statm");
    std::size_t all = 0;
    std::size_t resident = 0;
    file >> all >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

std::optional<int> WindowDriver::close() {
    screen->send(screen->atom("WM_PROTOCOLS"), {0, 0, 0, 0, 0}, screen->atom("WM_DELETE_WINDOW"));
    return waitForEnd();
}

std::optional<int> WindowDriver::waitForEnd() {
    auto const deadline = Clock::now() + PATIENCE;
    while (program != 0 && Clock::now() < deadline) {
        int status = 0;
        if (waitpid(program, &status, WNOHANG) == program) {
            program = 0;
            return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        }
        sleep();
    }
    return std::nullopt;
}
