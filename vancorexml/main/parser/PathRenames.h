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
    // Inserts, or overwrites what `from` became.
    void SetRename(const VPath& from, const VPath& to);
    // A file was gathered from `from` to `to`, and its content has the checksum `crc`: when
    // an earlier file had the same, `from` becomes that one's target. The folder of `from`
    // becomes the folder of `to` until one of its files goes elsewhere; then it is renamed
    // no more. Nothing for an empty `from`.
    void SetCRC(const VPath& from, const VPath& to, int crc);

    // What exactly `path` became; else `path`.
    VPath RenamePath(const VPath& path) const;
    // What the old path became that is `path` once it is taken below `base`; empty when there
    // is none or when that is `path` itself. Linear in the renames, as are the two below.
    VPath RenamePathAbsolute(const VPath& path, const VPath& base) const;
    // The first old path, in order, that became `path`; empty when there is none.
    VPath ReverseRenamePath(const VPath& path) const;
    // Whether the text of `path`, written with "/", begins with that of a new path so written:
    // also "C:/output" for "C:/out". Letter case counts.
    bool IsValidPath(const VPath& path) const;
    // Forgets the renames and the folders seen, but not the checksums: files gathered later
    // still share the targets of earlier ones.
    void ResetRenames();

private:
    std::map<VPath, VPath> m_pathMap;
    std::map<int, VPath> m_crcPaths;
    std::set<VPath> m_seenFolders;
};
