// platform/platform.h: the operating-system calls the library is written against, by their own names. This is
// the only header that knows where they come from: the system's headers on Windows, coredll.dll and ws2.dll
// on Windows CE, our own implementation elsewhere.
#pragma once

#if defined(LUMO_PLATFORM_WINCE)
#include "platform/wince/wince_platform.h"
#elif defined(_WIN32)
#include "platform/windows/windows_platform.h"
#else
#include "platform/posix/posix_platform.h"
#endif

// Beside the system's own calls each platform gives, in namespace lumo:
//   kPathSeparator              WCHAR that ends moduleDirectory
//   LUMO_WIDE("text")           a text of WCHAR
//   FileName                    where a file is, in the form in which the system takes it
//   MakeFileName(name, &out)    from WCHARs; empty, which no file is, when that cannot be
//   AppendToFile(&name, text, length)
//                               opens the file or makes it, appends the text, ends lines as text files of the
//                               system do, and closes it; not 0 when all of it was written. The last error
//                               is not told.
//   PlatformExit(status)        ends the host process after its exit handlers
