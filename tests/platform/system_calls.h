// platform/system_calls.h: the operating system's own calls, as the platform's functions make them: one of
// them, named, fails on request, or something happens in front of it. On POSIX hosts, in the program whose
// linker wraps them.
#pragma once

#include <functional>
#include <string>

namespace test {

// After so many more calls of that name, one fails with this value of errno and has no effect. (A close that
// fails has closed; a connect that is interrupted goes on.)
void FailCall(const std::string &name, int error, int calls = 0);

// Is done in front of the next call of that name.
void BeforeCall(const std::string &name, std::function<void()> work);

// So many calls of stat see each file under a number of its own, or on a device of its own.
enum class Alias { kNumber, kDevice };
void AliasFiles(Alias alias, int calls);

// The next dladdr gives this name, which may be null; the text is borrowed.
void NameLibraryFile(const char *name);

// From now on nothing fails. How many of the failures and happenings asked for have not come about.
int EndTrouble();

}  // namespace test
