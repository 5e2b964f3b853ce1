#pragma once

namespace brask {

/// In a release build: keeps what is in memory, a private key for one, out of core files and away from other
/// processes of the same user. The programs that this one starts are not affected. A debug build can be
/// debugged as any other.
void keepMemoryPrivate();

} // namespace brask
