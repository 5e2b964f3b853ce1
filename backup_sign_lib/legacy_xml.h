#pragma once

// What is left of the deprecated commands, which once signed XML files: the files are passed through. An
// empty name stands for standard input or output, which is closed at the end.

#include <string>

namespace brask {

/// Copies bytes. Reports nothing: a write that fails ends the copy, and callers take whatever came. An
/// `input` that can't be opened ends the process with a fault, and so does such an `output` once there is a
/// byte for it.
void copyFileOrStream(const std::string& input, const std::string& output);

/// Writes the document `input` as UTF-8 to `output`, a migration dump in an envelope without its envelope.
/// Raises the errors of XML documents.
void unwrapEnvelope(const std::string& input, const std::string& output);

} // namespace brask
