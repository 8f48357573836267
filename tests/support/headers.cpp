// The precompiled headers of the tests belong to this source; see tests/CMakeLists.txt.
