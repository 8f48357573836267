#pragma once

#include <unistd.h>

namespace vellum::viewport {

/// Owns an open file of the operating system, which it closes.
class FileDescriptor {
public:
    /// \param number as open() and its like return it; a negative one stands for none
    explicit FileDescriptor(int number) : number(number) {}
    ~FileDescriptor() {
        if (isOpen()) {
            ::close(number);
        }
    }
    FileDescriptor(FileDescriptor const&) = delete;
    FileDescriptor& operator=(FileDescriptor const&) = delete;

    int get() const { return number; }
    bool isOpen() const { return number >= 0; }

private:
    int number;
};

}  // namespace vellum::viewport
