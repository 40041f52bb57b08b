// Writing files atomically.
#pragma once

#include <cstddef>
#include <exception>
#include <memory>
#include <string_view>

#include "vancoreplatform/Export.h"
#include "vancoreplatform/VPath.h"
#include "vancoreplatform/VString.h"

class TemporaryFile;

// Replaces the content of a file, or creates the file. Writes a temporary file in the folder of the target. Commit
// flushes it to the disk and renames it, so a failure at any time leaves the old file unchanged. Other programs see
// either the old file or the complete new one.
//
// The new file keeps these properties of the old file:
//  - Permissions. A file system that cannot change permissions may give fewer, never more.
//  - Owner and group, if this process may set them. Otherwise the file belongs to the user of this process. If the
//    group changes, the group and all others get only the permissions that both had. If the old file also has an
//    access list, which could grant more than that, the new file has no list and only its owner has permissions.
//  - On Linux, the access list and the other extended attributes. Attributes that describe the old content or give
//    it privileges are not copied, because the system also drops or recomputes them when a file is written.
//  - On Windows, the attributes "hidden", "system", "archive", "not indexed" and "encrypted", the access list, the time
//    of creation and the named streams. The owner is the user of this process.
//
// The constructor finds the file to which the path leads. So a later change of the current folder or of a link has no
// effect, except for links to folders on Windows. If several objects replace the same file, the last Commit wins.
//
// Symbolic links stay: the file to which they lead is replaced. A file with several hard links is replaced under one
// name only (see OtherNames).
//
// The temporary file: on Linux it has no name until Commit, if the file system can do that, as most local ones can. So
// the system removes it if the process is killed, except at the moment between the naming and the renaming. Otherwise,
// and on Windows, it is called ".vanxml-" and twelve hexadecimal digits. No later replacement uses or removes a file
// that a killed process has left. If the target exists, only the owner of the temporary file can read it until Commit.
// On Windows, everybody can who can read the target.
//
// On Windows:
//  - A path may have up to 32,767 UTF-16 code units, every kind of root (`\\?\`, `\\server\share`, `C:name`) and both
//    kinds of separators. The names of devices and of named streams are refused. So is a symbolic link that leads to no
//    file.
//  - If another process has the target open, Commit tries again for about 0.3 seconds, because virus scanners close
//    files soon. Then it fails with the reason "another process uses the file", and the old file is unchanged. If all
//    other processes share the file for its removal (FILE_SHARE_DELETE), Windows 10 and later replace it on a local
//    disk, and these processes keep the old content.
//  - If a link to a folder of the path changes before Commit, the new file goes to the new folder. Commit fails if that
//    folder is on another disk.
//  - The rename is one call of the system, so the target exists at any time.
//  - The system deletes the temporary file if the process is killed and the file system can do that. There are two
//    short exceptions: until the constructor has marked the new file, and while Commit renames it.
//
// Ownership: owns the temporary file, and removes it on destruction unless Commit succeeded. Needs up to three open
// files of the system.
//
// Errors: a failure throws VIO::Exception, with the message `Cannot write "NAME": REASON`. If the operating system
// reports the failure, the reason is its message. On Windows, that message is in English if the system has it in
// English. Lack of memory throws std::bad_alloc. After a failure, every later call throws the same exception, so an
// incomplete file never replaces the target.
//
// Threads: one at a time for each object.
//
//     FileReplacement file("report.xml");
//     file.Write("<report/>\n");
//     file.Commit();
class VANCOREPLATFORM_API FileReplacement {
public:
    // Creates the temporary file. Throws VIO::Exception if the target is a folder, a device or a pipe, or if this
    // process may not write it. A file without any write permission, or with the read-only attribute of Windows, is
    // refused to root and administrators too: its owner protected it from changes.
    explicit FileReplacement(const VPath& target);
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    // Returns the number of other hard links to the old file. These names keep the old content.
    std::size_t OtherNames() const noexcept { return m_otherNames; }

    // Appends bytes. There is no buffer: each call writes to the system, so join small pieces before the call.
    void Write(std::string_view bytes);
    // Replaces the target. Returns when the new content is on the disk. Call it once, after the last Write: later calls
    // of Write and Commit throw VIO::Exception.
    void Commit();

    // Removes the temporary files of all objects of this process. On POSIX systems it is async-signal-safe: call it
    // from the handler of a signal that ends the process. It covers 1024 files with names at a time. After the call, no
    // Commit succeeds: it waits up to a second for the end of the process and throws VIO::Exception. A constructor that
    // needs a file with a name does the same. Does nothing on Windows, where the system removes the files when the
    // process ends (see above).
    static void RemoveTemporaryFiles() noexcept;

private:
    // Runs a step. Converts std::system_error to VIO::Exception, stores every exception in m_failure and throws it.
    template <typename Step>
    void Run(const Step& step);

    VString m_name;  // the path of the target as given
    std::unique_ptr<TemporaryFile> m_file;
    std::size_t m_otherNames = 0;
    std::exception_ptr m_failure;  // thrown by every further call
};
