// headers.cpp: stands for the tests' precompiled headers: see CMakeLists.txt.
