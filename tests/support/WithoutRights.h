#pragma once

#include <gtest/gtest.h>

#include <unistd.h>

/// Acts as a user without rights while it lives; changes nothing for a user who is none with all rights.
class WithoutRights {
public:
    WithoutRights() : wasRoot(geteuid() == 0) {
        if (wasRoot && seteuid(65534) != 0) {
            ADD_FAILURE() << "cannot give up the rights of root";
        }
    }
    ~WithoutRights() {
        if (wasRoot && seteuid(0) != 0) {
            ADD_FAILURE() << "cannot take back the rights of root";
        }
    }
    WithoutRights(WithoutRights const&) = delete;
    WithoutRights& operator=(WithoutRights const&) = delete;

private:
    bool wasRoot;
};
