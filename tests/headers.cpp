// Stands for the tests' precompiled headers: see CMakeLists.txt.
