#pragma once

namespace dumpsig {

/// The whole program: the exit code for its arguments.
int run(int argc, const char* const* argv);

} // namespace dumpsig
