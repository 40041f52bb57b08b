// Files without a name (O_TMPFILE).
#pragma once

#include <string>

#include <fcntl.h>
#include <unistd.h>

#include "tests/common/TestSupport.h"

namespace testsupport {

// True if a file in the folder can exist without a name.
inline bool HasUnnamedFiles(const TemporaryFolder& folder)
{
#if defined(O_TMPFILE)
    const int handle = openat(AT_FDCWD, folder.Path(".").toStdString().c_str(), O_TMPFILE | O_WRONLY, 0600);
    if (handle >= 0)
        close(handle);
    return handle >= 0;
#else
    static_cast<void>(folder);
    return false;
#endif
}

}  // namespace testsupport
