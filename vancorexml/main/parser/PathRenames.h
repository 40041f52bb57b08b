// The renames of the files to which a document refers.
#pragma once

#include <map>
#include <set>

#include "vancoreplatform/VPath.h"
#include "vancorexml/main/parser/XMLExport.h"

// Maps old paths to new paths, for a document whose files were copied to another place. Renames are
// set one by one, or derived from checksums of the files: files of equal content share one new path,
// and a folder is renamed if all its files are copied to the same folder.
//
// Ownership: a value. Threads: one writer or many readers. For the renames of a document, see
// DOM::GetPathRenames.
//
//     PathRenames renames;
//     renames.SetCRC("C:\\in\\a.csv", "data/a.csv", checksum);
//     renames.RenamePath("C:\\in");  // "data"
//     document.SetPathRenames(renames);
class VANCOREXML_API PathRenames {
public:
    PathRenames() = default;
    PathRenames(const PathRenames& other) = default;
    PathRenames& operator=(const PathRenames& other);

    // Old path to new path.
    const std::map<VPath, VPath>& GetPathMap() const noexcept { return m_pathMap; }
    // Inserts the rename, or overwrites the new path of `from`.
    void SetRename(const VPath& from, const VPath& to);
    // Records that a file whose content has the checksum `crc` was copied from `from` to `to`. If an
    // earlier file had the same checksum, `from` is renamed to the new path of that file. The first
    // file with a checksum is not renamed: call SetRename for it. The folder of `from` is renamed to
    // the folder of `to`; once its files are copied to different folders, it is no longer renamed.
    // Does nothing if `from` is empty.
    void SetCRC(const VPath& from, const VPath& to, int crc);

    // Returns the new path of `path`, or `path` if it was not renamed.
    VPath RenamePath(const VPath& path) const;
    // Finds the first old path that, resolved against `base`, equals `path`, and returns its new
    // path. Returns an empty path if there is none or if the new path is `path` itself. This and the
    // next two operations are linear in the number of renames.
    VPath RenamePathAbsolute(const VPath& path, const VPath& base) const;
    // Returns the first old path, in the order of the paths, whose new path is `path`; empty if
    // there is none.
    VPath ReverseRenamePath(const VPath& path) const;
    // True if the text of `path` begins with the text of one of the new paths, both written with
    // "/". So "C:/output" begins with "C:/out". Case-sensitive.
    bool IsValidPath(const VPath& path) const;
    // Removes all renames, but keeps the checksums: later files still share the new paths of earlier
    // files of equal content.
    void ResetRenames();

private:
    std::map<VPath, VPath> m_pathMap;
    std::map<int, VPath> m_crcPaths;
    std::set<VPath> m_seenFolders;
};
