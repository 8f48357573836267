#pragma once

#include "viewport/files/images/Picture.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

/// A program with a window on the X display of the test, driven as by a person: through the X server's test
/// extension, which moves the pointer and presses keys and buttons for everybody.
///
///     WindowDriver window({"cube.obj"});
///     ASSERT_TRUE(window.isOpen());
///     window.drag(1, {400, 300}, {450, 320});
///     Picture const after = window.settled();
class WindowDriver {
public:
    struct Point {
        int x;  ///< pixels from the left edge of the window
        int y;  ///< pixels from its top edge
    };

    /// Starts vl_viewport, and waits for its window.
    /// \param environment settings "NAME=value" beside those of the test
    /// \param folder its working folder
    WindowDriver(std::vector<std::string> const& arguments, std::vector<std::string> const& environment,
                 std::string const& folder);
    ~WindowDriver();  ///< Ends the program.
    WindowDriver(WindowDriver const&) = delete;
    WindowDriver& operator=(WindowDriver const&) = delete;

    bool isOpen() const;

    /// What the window shows.
    vellum::viewport::Picture look() const;

    /// What it shows when it has not changed for a while; the last look where it goes on changing.
    vellum::viewport::Picture settled() const;

    /// Looks until the condition holds. False where it never does.
    bool waitUntil(std::function<bool(vellum::viewport::Picture const&)> const& condition) const;

    /// The middle of a text that the interface writes, found by its letters; waits for it. Fails the test
    /// where it does not appear. \param after where it begins at the earliest, in reading order
    Point find(std::string const& text, Point after = {0, 0}) const;

    // Each waits until the program has taken it in.

    void move(Point to);
    void press(unsigned int button);
    void release(unsigned int button);
    void click(unsigned int button, Point at);
    void drag(unsigned int button, Point from, Point to);
    void turnWheel(int steps, Point at);  ///< Away from the user where positive.

    /// Keys by their X names, pressed together and released: {"Control_L", "z"}.
    void type(std::vector<std::string> const& keys);

    void hold(std::string const& key);   ///< Presses a key, until letGo().
    void letGo(std::string const& key);  ///< Releases it.

    /// Letters, digits, points and minus signs, one after the other.
    void write(std::string const& text);

    void resize(int width, int height);
    void drop(std::vector<std::string> const& files);  ///< As from a file manager, onto its middle.

    /// Processor time that the program has used, seconds.
    double processorTime() const;

    /// Memory that the program has in use, bytes.
    std::size_t memory() const;

    /// Asks it to close its window, and gives its exit status; nothing where it does not end.
    std::optional<int> close();

    /// The exit status of a program that closes its window itself; nothing where it does not end.
    std::optional<int> waitForEnd();

private:
    struct Screen;

    /// Whether it does nothing for so long.
    bool _rests(std::chrono::milliseconds duration) const;
    void _waitUntilTaken() const;

    std::unique_ptr<Screen> screen;
    pid_t program = 0;  // 0: it has ended
};
