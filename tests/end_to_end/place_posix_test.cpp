// end_to_end/place_posix_test.cpp: where the library lies when its path is a link or is too long.
#include <dlfcn.h>

#include <filesystem>

#include "end_to_end/register.h"

namespace {

namespace fs = std::filesystem;

int CallDllAttach(const fs::path &file) {
  void *const module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  EXPECT_NE(module, nullptr) << dlerror();
  const auto attach = reinterpret_cast<int (*)(void *)>(dlsym(module, "DllAttach"));
  return attach(nullptr);
}

// Two terminals may share one library file; each has its files beside its own link.
TEST(LinkedLibrary, HasItsFilesBesideTheLink) {
  test::Shop shop;
  const fs::path shared = fs::path(shop.folder()) / "shared";
  const fs::path terminal = fs::path(shop.folder()) / "terminal";
  fs::create_directory(shared);
  fs::create_directory(terminal);
  fs::copy_file(LUMO_LIBRARY_FILE, shared / "lumo.so");
  fs::create_symlink(shared / "lumo.so", terminal / "lumo.so");
  EXPECT_EQ(CallDllAttach(terminal / "lumo.so"), 1);
  void *const module = dlopen((terminal / "lumo.so").c_str(), RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(reinterpret_cast<int (*)(void)>(dlsym(module, "LUMOClean"))(), 0);
  EXPECT_TRUE(fs::exists(terminal / "TRACE.TXT"));
  EXPECT_FALSE(fs::exists(shared / "TRACE.TXT"));
}

TEST(LinkedLibrary, MayBeLoadedByARelativePath) {
  test::Shop shop;
  fs::create_directory(fs::path(shop.folder()) / "POS");
  fs::copy_file(LUMO_LIBRARY_FILE, fs::path(shop.folder()) / "POS" / "lumo.so");
  const fs::path before = fs::current_path();
  fs::current_path(shop.folder());
  void *const module = dlopen("POS/lumo.so", RTLD_NOW | RTLD_LOCAL);
  fs::current_path(before);
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(reinterpret_cast<int (*)(void)>(dlsym(module, "LUMOClean"))(), 0);
  EXPECT_TRUE(fs::exists(fs::path(shop.folder()) / "POS" / "TRACE.TXT"));
}

TEST(LongPath, OfTheLibraryFileIsRefusedAndTakesNoFolderAboveIt) {
  test::Shop shop;
  fs::path folder = shop.folder();
  while (folder.string().size() < 260) folder /= std::string(50, 'p');
  fs::create_directories(folder);
  fs::copy_file(LUMO_LIBRARY_FILE, folder / "lumo.so");
  EXPECT_EQ(CallDllAttach(folder / "lumo.so"), 122);
}

}  // namespace
