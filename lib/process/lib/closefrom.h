#pragma once

namespace brask {

/// Closes every descriptor at or above `lowestFd`; nothing is reported. Meant for a freshly forked child. Not
/// the C library's function of this name: inside the namespace, the plain name means this one.
void closefrom(int lowestFd);

} // namespace brask
