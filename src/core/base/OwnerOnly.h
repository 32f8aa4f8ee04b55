#pragma once
#include <QString>

// Stored connections hold passwords, so the data folder and the files Vantry keeps there are
// readable by their owner only: folders 0700, files 0600.
namespace OwnerOnly {
// Creates the folder (and its parents) when missing; a folder it creates is 0700. A folder that
// already exists keeps its permissions: it may be a portable install's shared folder.
bool makeFolder(const QString &folder);
// Creates an empty 0600 file when none exists, so whatever writes it later (SQLite, an atomic
// save that keeps the old file's permissions) writes into a private file from the first byte.
void createFile(const QString &file);
// Takes group and other permissions away from an existing file.
void restrictFile(const QString &file);
} // namespace OwnerOnly
