// Makes the target of the precompiled headers a C++ target; the headers are listed in tests/CMakeLists.txt.
