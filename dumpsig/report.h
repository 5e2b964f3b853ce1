#pragma once

#include "dumpsig/document_facts.h"
#include "dumpsig/verdict.h"

#include <string>
#include <vector>

namespace dumpsig {

/// The answer of `verify` for people: one or two lines.
std::string verdictText(const Verdict& verdict);

/// The same for programs: an object on one line, with a line end. `error` is why the dump could not be
/// judged, empty when it could.
std::string verdictJson(const Verdict& verdict, const std::vector<std::string>& volumes, double seconds,
                        const std::string& error);

/// The answer of `info`, for people and for programs.
std::string factsText(const DocumentFacts& facts);
std::string factsJson(const DocumentFacts& facts, const std::string& error);

} // namespace dumpsig
