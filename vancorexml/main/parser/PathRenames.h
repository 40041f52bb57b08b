// How the files that a document refers to were renamed.
#pragma once

#include <map>
#include <set>

#include "vancoreplatform/VPath.h"
#include "vancorexml/main/parser/XMLExport.h"

// Old paths and what they became when a document's files were gathered into a new place:
// set one by one, or derived from the files' contents. Files of equal content share one
// target, and a folder follows its files as long as all of them go to one folder.
//
// Ownership: a value. Threads: one writer or many readers; the document guards its own.
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
    // A file was gathered from `from` to `to`, and its content has the checksum `crc`: when
    // an earlier file had the same, `from` becomes that one's target. The folder of `from`
    // becomes the folder of `to` until one of its files goes elsewhere; then it is renamed
    // no more. Nothing for an empty `from`.
    void SetCRC(const VPath& from, const VPath& to, int crc);

    // The new path of `path`; `path` itself when it was not renamed.
    VPath RenamePath(const VPath& path) const;
    // Finds the first old path that, resolved against `base`, equals `path`, and returns its new
    // path. Empty when there is none or when the new path is `path` itself. Linear in the number
    // of renames, as are the next two operations.
    VPath RenamePathAbsolute(const VPath& path, const VPath& base) const;
    // The first old path, in order, that became `path`; empty when there is none.
    VPath ReverseRenamePath(const VPath& path) const;
    // Whether `path` begins with one of the new paths. Compares their texts, both written with
    // "/", so "C:/output" begins with "C:/out". Case-sensitive.
    bool IsValidPath(const VPath& path) const;
    // Forgets the renames and the folders seen, but not the checksums: files gathered later
    // still share the targets of earlier ones.
    void ResetRenames();

private:
    std::map<VPath, VPath> m_pathMap;
    std::map<int, VPath> m_crcPaths;
    std::set<VPath> m_seenFolders;
};
