#pragma once

// A look at the locale that the environment names, before child processes inherit it.

namespace brask {

/// Leaves the environment as it is if the C library knows the locale that it names. Otherwise sets LC_ALL to
/// "C", so that child processes run under that locale, and notes it in the log. The locale of this process
/// does not change.
void checkLocale();

} // namespace brask
