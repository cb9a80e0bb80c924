// FileWrapper: a file-system node held in memory (a regular file's bytes, a directory of
// named child wrappers, or a symbolic link), read from and written to disk, and flattened
// into bytes of our own format.
#pragma once

#include "ns/Data.h"
#include "ns/Date.h"
#include "ns/Dictionary.h"
#include "ns/Error.h"
#include "ns/KeyedArchiver.h"
#include "ns/Object.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vl::ns {

class FileWrapper;
using FileWrapperPtr = std::shared_ptr<FileWrapper>;

/// A wrapper is a regular file, a directory or a symbolic link; the kind is fixed when it is
/// made. Queries that do not fit the kind answer nothing (empty bytes, no children, an
/// empty destination) and changes that do not fit it do nothing.
///
/// Children of a directory are kept under unique keys, sorted (UTF-16 order). A key comes
/// from the child's preferred file name: a '/' or NUL in it becomes '_', and an empty name,
/// "." or ".." becomes "Untitled". When the key is taken, " 2", " 3", ... go before the
/// extension: "image.png", "image 2.png", "image 3.png". Adding a child sets its filename to
/// its key (and its preferred file name too, when it had none).
///
/// Paths are UTF-8 on disk. File system errors come back in the POSIX error domain with the
/// errno as code and the path under FilePathErrorKey.
///
/// serializedRepresentation is a flat form of our own: "VLFW", a version byte, then the
/// tree, each node a kind byte, a flags byte, the modification date when flagged, the two
/// names, and the bytes, the link destination or the counted children; lengths are
/// little-endian, children in key order. Reading it back checks every length and answers nil
/// for bytes it did not write (so what it reads, it writes back byte for byte), never
/// crashing and never allocating more than the input holds.
///
/// Keyed coding key: "serializedRepresentation" (data).
class FileWrapper : public Object, public Coding {
public:
  enum class Kind : uint8_t { RegularFile = 1, Directory = 2, SymbolicLink = 3 };

  /// An empty regular file (what the unarchiver starts from).
  FileWrapper() = default;

  /// initRegularFileWithContents:.
  static FileWrapperPtr createRegularFile(Data contents);
  /// initDirectoryWithFileWrappers:: each child goes in under its key as addFileWrapper
  /// would make it unique (null children are skipped).
  static FileWrapperPtr
  createDirectory(const std::vector<std::pair<std::u16string, FileWrapperPtr>> &children = {});
  /// initSymbolicLinkWithDestinationURL:.
  static FileWrapperPtr createSymbolicLink(std::u16string destination);
  /// initWithURL:options:error:: the file, directory tree or link at `path` (links are not
  /// followed; sockets, devices and pipes inside a directory are skipped). Nil with `error`
  /// filled when it cannot be read. Costs reading every file below.
  static FileWrapperPtr createWithPath(std::u16string_view path, ErrorPtr *error = nullptr);
  /// initWithSerializedRepresentation:; nil for bytes that are not our flat form.
  static FileWrapperPtr createWithSerializedRepresentation(const Data &data);

  VL_OBJECT(NSFileWrapper)

  Kind kind() const { return kind_; }
  bool isRegularFile() const { return kind_ == Kind::RegularFile; }
  bool isDirectory() const { return kind_ == Kind::Directory; }
  bool isSymbolicLink() const { return kind_ == Kind::SymbolicLink; }

  /// The name it had on disk or under its parent; empty when it has none.
  const std::u16string &filename() const { return filename_; }
  void setFilename(std::u16string name) { filename_ = std::move(name); }
  /// The name it asks to be saved under; empty when it has none.
  const std::u16string &preferredFilename() const { return preferredFilename_; }
  void setPreferredFilename(std::u16string name) { preferredFilename_ = std::move(name); }
  /// The modification date read from disk, or the one set; nullopt when unknown.
  std::optional<Date> modificationDate() const { return modificationDate_; }
  void setModificationDate(std::optional<Date> date) { modificationDate_ = date; }

  /// A regular file's bytes; empty for the other kinds.
  const Data &regularFileContents() const { return contents_; }
  /// A link's destination as stored; empty for the other kinds.
  const std::u16string &symbolicLinkDestination() const { return destination_; }

  /// A directory's children by key (a new dictionary of FileWrapper values); null for the
  /// other kinds.
  DictionaryPtr fileWrappers() const;
  /// The children in key order.
  const std::vector<std::pair<std::u16string, FileWrapperPtr>> &children() const {
    return children_;
  }
  /// The child under `key`, or null.
  FileWrapperPtr fileWrapperForKey(std::u16string_view key) const;
  /// The key of `child` in this directory (by identity), or "".
  std::u16string keyForFileWrapper(const FileWrapper &child) const;
  /// Adds `child` under a unique key made from its preferred file name (or filename) and
  /// answers the key; "" and nothing done for a null child or when this is not a directory.
  std::u16string addFileWrapper(FileWrapperPtr child);
  /// Adds a regular file of `contents` named `preferredFilename`; answers its key.
  std::u16string addRegularFileWithContents(Data contents, std::u16string_view preferredFilename);
  /// Removes `child` (by identity); nothing when it is not a child.
  void removeFileWrapper(const FileWrapperPtr &child);

  /// readFromURL:options:error:: replaces this wrapper's kind, names, date and contents by
  /// what is at `path`, as createWithPath reads it. False with `error` filled, and this
  /// wrapper unchanged, when it cannot be read.
  bool readFromPath(std::u16string_view path, ErrorPtr *error = nullptr);
  /// Writes the wrapper at `path` (children under their keys). Atomically: written beside
  /// the path first and renamed over it, so that the old item stays whole until the new one
  /// is complete; otherwise in place, over what is there. False with `error` filled on
  /// failure; an atomic write leaves nothing behind then.
  bool writeToPath(std::u16string_view path, bool atomically, ErrorPtr *error = nullptr) const;

  /// The flat form (see the class comment). Costs a copy of every byte below.
  Data serializedRepresentation() const;

  std::u16string description() const override;

  void encodeWithCoder(KeyedArchiver &coder) const override;
  void initWithCoder(KeyedUnarchiver &coder) override;

private:
  friend struct FileWrapperReader;
  std::u16string insertChild(std::u16string_view name, FileWrapperPtr child);
  void takeContentsOf(FileWrapper &other);

  Kind kind_ = Kind::RegularFile;
  std::u16string filename_;
  std::u16string preferredFilename_;
  std::optional<Date> modificationDate_;
  Data contents_;
  std::u16string destination_;
  std::vector<std::pair<std::u16string, FileWrapperPtr>> children_;
};

} // namespace vl::ns
