#pragma once

namespace halvo::test {

/// From now on every system call of this thread ends the process, but for the one that ends it.
/// False when the kernel refuses such a filter. In a forked child.
bool forbidSystemCalls();

} // namespace halvo::test
