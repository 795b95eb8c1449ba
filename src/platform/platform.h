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
//   MakeFileName(name, &out)    makes one of WCHARs; an empty one, which no file has, when it cannot be made
//   AppendToFile(&name, text, length)
//                               opens or makes the file, appends the text with the line ends of the system's
//                               text files, and closes it. Not 0 when all of it was written. The last error
//                               is undefined.
//   PlatformExit(status)        ends the host process after its exit handlers
