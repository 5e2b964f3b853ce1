// Only there to carry the precompiled headers: see tests/CMakeLists.txt.
