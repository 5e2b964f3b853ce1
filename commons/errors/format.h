#pragma once

// The text formatting library under one name. brask::fmtlib is <format> where the compiler has it and libfmt
// where it has not; nothing else in the code knows which.

#if __has_include(<format>)
#include <format>
#endif

#ifndef __cpp_lib_format
#include <fmt/format.h>
#endif

#include <string>
#include <string_view>

namespace brask {

namespace fmtlib {
#ifdef __cpp_lib_format
using std::format;
using std::format_error;
using std::make_format_args;
using std::vformat;
#else
using fmt::format;
using fmt::format_error;
using fmt::make_format_args;
using fmt::vformat;
#endif
} // namespace fmtlib

/// Fills `args` into `messageTemplate`. A template that fails to format never becomes an exception: the
/// result is then the failure's own text, ": ", and the raw template. std::bad_alloc passes through.
template <class... Args>
std::string formatMessage(std::string_view messageTemplate, const Args&... args) {
    try {
        return fmtlib::vformat(messageTemplate, fmtlib::make_format_args(args...));
    } catch (const fmtlib::format_error& e) {
        return fmtlib::format("{}: {}", e.what(), messageTemplate);
    }
}

} // namespace brask
