// File system access through UTF-16 paths (the platform's NSFileManager): existence,
// directories, listings, copies, moves, removal, whole-file reads and atomic writes of files
// and of directory trees.
#pragma once

#include "ns/Data.h"
#include "ns/Dictionary.h"
#include "ns/Error.h"
#include "ns/Object.h"
#include "ns/URL.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vl::ns {

class FileManager;
using FileManagerPtr = std::shared_ptr<FileManager>;

/// Codes of file errors in CocoaErrorDomain, as the platform numbers them.
enum CocoaFileError : int64_t {
  FileNoSuchFileError = 4,
  FileReadUnknownError = 256,
  FileReadNoPermissionError = 257,
  FileReadInvalidFileNameError = 258,
  FileReadNoSuchFileError = 260,
  FileWriteUnknownError = 512,
  FileWriteNoPermissionError = 513,
  FileWriteInvalidFileNameError = 514,
  FileWriteFileExistsError = 516,
  FileWriteOutOfSpaceError = 640,
  FileWriteVolumeReadOnlyError = 642,
};

/// Keys of attributesOfItemAtPath's dictionary.
inline constexpr std::u16string_view FileType = u"NSFileType";
inline constexpr std::u16string_view FileSize = u"NSFileSize";
inline constexpr std::u16string_view FileModificationDate = u"NSFileModificationDate";
inline constexpr std::u16string_view FilePosixPermissions = u"NSFilePosixPermissions";

/// Values under FileType.
inline constexpr std::u16string_view FileTypeRegular = u"NSFileTypeRegular";
inline constexpr std::u16string_view FileTypeDirectory = u"NSFileTypeDirectory";
inline constexpr std::u16string_view FileTypeSymbolicLink = u"NSFileTypeSymbolicLink";
inline constexpr std::u16string_view FileTypeCharacterSpecial = u"NSFileTypeCharacterSpecial";
inline constexpr std::u16string_view FileTypeBlockSpecial = u"NSFileTypeBlockSpecial";
inline constexpr std::u16string_view FileTypeSocket = u"NSFileTypeSocket";
inline constexpr std::u16string_view FileTypeUnknown = u"NSFileTypeUnknown";

/// Bits of writeData's options, as the platform numbers them.
enum DataWritingOptions : uint32_t {
  /// Write beside the target, flush, then rename over it: readers see the old bytes or the
  /// new ones, never a mixture, and a failed write leaves the old file.
  DataWritingAtomic = 1,
  /// Fail with FileWriteFileExistsError when something is already at the path.
  DataWritingWithoutOverwriting = 2,
};

/// Directories URLForDirectory can find.
enum SearchPathDirectory : uint32_t {
  /// A fresh directory on the same file system as a given URL, for building a replacement.
  ItemReplacementDirectory = 99,
};

/// The directory for temporary files: $TMPDIR, else "/tmp/", always ending in "/".
std::u16string TemporaryDirectory();

/// Paths are UTF-16 and go to the system as UTF-8; names read from disk that are not valid
/// UTF-8 come back with U+FFFD in place of the bad bytes.
///
/// Failures answer false, nil or nullopt and, when `error` is not null, an Error in
/// CocoaErrorDomain with a CocoaFileError code, the path under FilePathErrorKey and the
/// system's errno as a POSIXErrorDomain error under UnderlyingErrorKey. Nothing here throws
/// for an I/O problem. Symbolic links are never followed by removal, copies or walks.
class FileManager : public Object {
public:
  VL_OBJECT(NSFileManager)

  /// The shared manager. Tests that inject failures make their own with std::make_shared.
  static const FileManagerPtr &defaultManager();

  /// True when something is at `path` (following symbolic links, so a dangling link is
  /// nothing); `isDirectory`, when given, says whether it is a directory.
  bool fileExistsAtPath(std::u16string_view path, bool *isDirectory = nullptr) const;

  /// Makes a directory; with `withIntermediateDirectories` also its missing parents, and an
  /// existing directory is then success. Without, an existing item is FileWriteFileExistsError.
  bool createDirectoryAtPath(std::u16string_view path, bool withIntermediateDirectories,
                             ErrorPtr *error = nullptr) const;

  /// The names in a directory, without "." and "..", sorted by UTF-16 units.
  std::optional<std::vector<std::u16string>>
  contentsOfDirectoryAtPath(std::u16string_view path, ErrorPtr *error = nullptr) const;

  /// Every item below a directory as a path relative to it ("a", "a/b", "c"): siblings in
  /// sorted order, each directory before its contents. Links to directories are listed, not
  /// entered. An unreadable directory anywhere below fails the whole walk.
  std::optional<std::vector<std::u16string>>
  subpathsOfDirectoryAtPath(std::u16string_view path, ErrorPtr *error = nullptr) const;
  std::optional<std::vector<std::u16string>> subpathsAtPath(std::u16string_view path) const {
    return subpathsOfDirectoryAtPath(path);
  }

  /// Copies a file, link or whole tree (with permission bits) to `toPath`, which must not
  /// exist. A failed copy removes what it made.
  bool copyItemAtPath(std::u16string_view path, std::u16string_view toPath,
                      ErrorPtr *error = nullptr) const;

  /// Moves an item to `toPath`, which must not exist; across file systems by copy and
  /// removal.
  bool moveItemAtPath(std::u16string_view path, std::u16string_view toPath,
                      ErrorPtr *error = nullptr) const;

  /// Removes a file or link, or a directory with everything below it. A link is removed
  /// itself; what it points to is left alone. Stops at the first item it cannot remove.
  bool removeItemAtPath(std::u16string_view path, ErrorPtr *error = nullptr) const;

  /// The bytes of a file, or nullopt (a directory is an error too).
  std::optional<Data> contentsAtPath(std::u16string_view path, ErrorPtr *error = nullptr) const;

  /// Writes `contents` atomically, replacing any file at `path`.
  bool createFileAtPath(std::u16string_view path, const Data &contents,
                        ErrorPtr *error = nullptr) const {
    return writeData(contents, path, DataWritingAtomic, error);
  }

  /// Writes `data` to `path` with DataWritingOptions. An atomic write goes to a hidden file
  /// beside the target, is flushed to disk, keeps the permissions of the file it replaces,
  /// and is renamed over it; on failure the temporary file is removed and the old file stays.
  bool writeData(const Data &data, std::u16string_view path, uint32_t options,
                 ErrorPtr *error = nullptr) const;

  /// The attributes of the item itself (a link is not followed): FileType, FileSize (an
  /// unsigned number), FileModificationDate (a Date) and FilePosixPermissions. Nil on failure.
  DictionaryPtr attributesOfItemAtPath(std::u16string_view path, ErrorPtr *error = nullptr) const;

  /// The process's working directory, or "" when it cannot be read.
  std::u16string currentDirectoryPath() const;

  /// For ItemReplacementDirectory: a new, empty, uniquely named directory beside the file
  /// of `appropriateForURL`, so that renaming from it into place cannot cross file systems.
  /// The caller removes it. `create` is implied. Nil with an error on failure.
  URLPtr URLForDirectory(SearchPathDirectory directory, const URLPtr &appropriateForURL,
                         bool create, ErrorPtr *error = nullptr) const;

  /// A new, empty directory with a unique name starting with `prefix` under
  /// TemporaryDirectory(), readable only by its owner. The caller removes it.
  std::optional<std::u16string> createTemporaryDirectory(std::u16string_view prefix = u"vlwp",
                                                         ErrorPtr *error = nullptr) const;

  /// A path in `directory` for `filename` that nothing occupies: the name itself, or else
  /// "stem-n.extension" ("stem-n" without an extension) for the first free n from 1 below
  /// 10000; nullopt when all are taken. Makes a missing directory (without intermediates).
  /// A directory that cannot be made, or a file in its place, fails an internal check.
  std::optional<std::u16string> uniqueFileNameForFilename(std::u16string_view filename,
                                                          std::u16string_view directory) const;

  /// Puts the item at `newItemPath` (a sibling, on the same file system) in the place of the
  /// one at `originalPath`: the original is renamed aside, the new item renamed into place,
  /// and the original removed. If the new item cannot be put in place, the original goes
  /// back, and the new item stays where it was. A missing original is simply replaced.
  bool replaceItemAtPath(std::u16string_view originalPath, std::u16string_view newItemPath,
                         ErrorPtr *error = nullptr) const;

  /// Writes a directory tree atomically: `write` fills a new hidden directory beside `path`,
  /// which then replaces whatever is at `path` through replaceItemAtPath. If `write` answers
  /// false (its error is passed on) or the swap fails, the new directory is removed and the
  /// old item at `path` keeps its old contents.
  using DirectoryWriter = std::function<bool(const std::u16string &directory, ErrorPtr *error)>;
  bool writeDirectoryAtomically(std::u16string_view path, const DirectoryWriter &write,
                                ErrorPtr *error = nullptr) const;

  /// For tests: called with the name of each step of an atomic write before it is taken
  /// ("write", "sync", "rename" for files; "create", "moveAside", "moveIntoPlace",
  /// "removeAside" for directories); a nonzero answer makes the step fail with that errno.
  using FailureInjector = std::function<int(std::string_view step)>;
  void setFailureInjector(FailureInjector injector) { injector_ = std::move(injector); }

private:
  int injected(std::string_view step) const { return injector_ ? injector_(step) : 0; }
  bool atomicWrite(const Data &data, const std::string &path, uint32_t options,
                   ErrorPtr *error) const;

  FailureInjector injector_;
};

} // namespace vl::ns
