#pragma once

namespace dumpsig {

/// What a script sees.
enum ExitCode : int {
    kIntact = 0,    ///< the answer is yes, or the work is done
    kNotIntact = 1, ///< the answer is no: not intact, not signed, unreadable document
    kUnknown = 2,   ///< no answer: a mistake in the call, or something could not be read or written
};

} // namespace dumpsig
