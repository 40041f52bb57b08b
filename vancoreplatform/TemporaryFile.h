// The calls to the operating system that replace a file. To port FileReplacement to another system, write a source
// like TemporaryFilePosix.cpp and TemporaryFileWindows.cpp for it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>

#include "vancoreplatform/VString.h"

// A new file that will replace or create the target. The operations throw std::system_error if they fail.
//
// Ownership: owns the file, and removes it on destruction unless it replaced the target.
//
// Threads: one at a time for each object.
class TemporaryFile {
public:
    enum class TargetKind { FileOrNone, Folder, Other };

    // The file that is replaced or created. On Windows the path has the form that ToNativeName returns. Give it only to
    // calls of the system: std::filesystem does not understand this form with every compiler.
    struct Target {
        std::filesystem::path path;
        TargetKind kind;
    };

    // Follows symbolic links. The name is neither empty nor contains a NUL.
    static Target FindTarget(const VString& name);
    // Creates a file in the folder of `target`, which is a regular file or does not exist. Throws
    // std::errc::permission_denied if the target is protected from changes.
    static std::unique_ptr<TemporaryFile> CreateFor(const std::filesystem::path& target);
    virtual ~TemporaryFile() = default;
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    // Returns the number of names of the target besides the one that is replaced.
    virtual std::size_t OtherNames() const noexcept = 0;
    // Writes all bytes.
    virtual void Write(std::string_view bytes) = 0;
    // Copies the properties of the target to the file, flushes and closes it, and renames it to the target.
    virtual void ReplaceTarget() = 0;

    // See FileReplacement::RemoveTemporaryFiles.
    static void RemoveAll() noexcept;

protected:
    // ".vanxml-", the twelve hexadecimal digits of a 48-bit number, and a NUL. Such a name is short enough for every
    // file system.
    using Name = std::array<char, 21>;

    TemporaryFile() = default;

    // Async-signal-safe.
    static Name FormatName(std::uint64_t number) noexcept;
    // Calls `create` with random numbers until it does not throw std::errc::file_exists, at most 100 times.
    template <typename Create>
    static auto CreateWithNewName(const Create& create)
    {
        constexpr int mostTries = 100;  // a second try is rare: there are 2^48 names
        for (int tries = 1;; ++tries) {
            try {
                return create(RandomNumber());
            } catch (const std::system_error& error) {
                if (error.code() != std::errc::file_exists || tries == mostTries)
                    throw;
            }
        }
    }

private:
    static std::uint64_t RandomNumber();
};
