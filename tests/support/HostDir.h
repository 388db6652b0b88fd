#pragma once

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

/// An empty runtime directory of the host platform for one test; gone with everything in it afterwards.
class HostDir {
public:
    HostDir() {
        std::string name = (mOuter / "qvn-test-XXXXXX").string();
        if (::mkdtemp(&name[0]) == nullptr) {
            std::abort();
        }
        mRoot = name;
        ::setenv("TMPDIR", name.c_str(), 1);  // where a child makes its own, which it may leave behind
        mUmask = ::umask(077);                // what the test makes here is private, as the platform demands
        ::setenv("QVN_HOST_DIR", path().c_str(), 1);
        for (const char* ofTheDeveloper : {"QVN_HOST_CONFIG", "QVN_LOG_LEVEL", "QVN_LOG_FILE"}) {
            ::unsetenv(ofTheDeveloper);
        }
    }

    ~HostDir() {
        ::umask(mUmask);
        ::unsetenv("QVN_HOST_DIR");
        ::unsetenv("QVN_HOST_CONFIG");
        ::setenv("TMPDIR", mOuter.c_str(), 1);
        std::error_code ignored;
        std::filesystem::remove_all(mRoot, ignored);
    }

    HostDir(const HostDir&) = delete;
    HostDir& operator=(const HostDir&) = delete;

    /// Not made yet: the platform makes it when it is needed.
    std::filesystem::path path() const { return mRoot / "run"; }

    /// A folder beside it, for files that the test names explicitly.
    std::filesystem::path root() const { return mRoot; }

private:
    std::filesystem::path mOuter = std::filesystem::temp_directory_path();
    std::filesystem::path mRoot;
    mode_t mUmask = 0;
};

inline void writeFile(const std::filesystem::path& path, const std::string& text) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}
