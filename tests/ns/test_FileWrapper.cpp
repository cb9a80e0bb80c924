// File wrappers and attachments: unique keys, disk round trips, atomic replacement, the flat
// form and its refusal of bad bytes.
#include "ns/FileWrapper.h"
#include "ns/Image.h"
#include "ns/KeyedArchiver.h"
#include "ns/String.h"
#include "ns/TextAttachment.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <dirent.h>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

using namespace vl::ns;

namespace {

// A fresh directory for one test, removed with everything in it afterwards.
class TempDir {
public:
  TempDir() {
    std::string pattern = ::testing::TempDir() + "vlwp-fw-XXXXXX";
    path_ = ::mkdtemp(pattern.data());
  }
  ~TempDir() { std::system(("rm -rf '" + path_ + "'").c_str()); }
  std::string path(const std::string &name) const { return path_ + "/" + name; }
  std::u16string path16(const std::string &name) const { return fromUTF8(path(name)); }
  std::vector<std::string> list() const {
    std::vector<std::string> names;
    if (DIR *dir = ::opendir(path_.c_str())) {
      while (dirent *e = ::readdir(dir))
        if (std::string(e->d_name) != "." && std::string(e->d_name) != "..")
          names.push_back(e->d_name);
      ::closedir(dir);
    }
    return names;
  }

private:
  std::string path_;
};

std::string fileText(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

FileWrapperPtr sampleTree() {
  auto root = FileWrapper::createDirectory();
  root->addRegularFileWithContents(Data::fromString("{\\rtf1 hello}"), u"TXT.rtf");
  root->addRegularFileWithContents(Data::fromString("\x89PNG"), u"picture.png");
  auto sub = FileWrapper::createDirectory();
  sub->setPreferredFilename(u"Files");
  sub->addRegularFileWithContents(Data(), u"empty");
  sub->addRegularFileWithContents(Data::fromString("caf\xc3\xa9"), u"caf\u00e9.txt");
  root->addFileWrapper(sub);
  root->addFileWrapper(FileWrapper::createSymbolicLink(u"picture.png"));
  return root;
}

// Structural equality of two trees: kinds, keys, bytes and link destinations.
void expectSameTree(const FileWrapper &a, const FileWrapper &b, const std::string &where = "/") {
  ASSERT_EQ(a.kind(), b.kind()) << where;
  EXPECT_EQ(a.regularFileContents(), b.regularFileContents()) << where;
  EXPECT_EQ(a.symbolicLinkDestination(), b.symbolicLinkDestination()) << where;
  ASSERT_EQ(a.children().size(), b.children().size()) << where;
  for (size_t i = 0; i < a.children().size(); ++i) {
    EXPECT_EQ(a.children()[i].first, b.children()[i].first) << where;
    expectSameTree(*a.children()[i].second, *b.children()[i].second,
                   where + toUTF8(a.children()[i].first) + "/");
  }
}

} // namespace

TEST(FileWrapper, ChildKeysAreUniqueAndSafe) {
  auto dir = FileWrapper::createDirectory();
  const std::pair<const char16_t *, const char16_t *> keys[] = {
      {u"image.png", u"image.png"},
      {u"image.png", u"image 2.png"},
      {u"README", u"README"},
      {u"README", u"README 2"},
      {u".hidden", u".hidden"},
      {u".hidden", u".hidden 2"},
      {u"../../etc/passwd", u".._.._etc_passwd"},
      {u"..", u"Untitled"},
  };
  for (const auto &[preferred, key] : keys)
    EXPECT_EQ(dir->addRegularFileWithContents(Data(), preferred), key);

  auto child = dir->fileWrapperForKey(u"image 2.png");
  ASSERT_NE(child, nullptr);
  EXPECT_EQ(child->filename(), u"image 2.png") << "the key becomes the filename";
  dir->removeFileWrapper(child);
  EXPECT_EQ(dir->addRegularFileWithContents(Data(), u"image.png"), u"image 2.png")
      << "a freed key is used again";

  // Only directories take children, never themselves or nothing.
  EXPECT_EQ(FileWrapper::createRegularFile(Data())->addRegularFileWithContents(Data(), u"x"), u"");
  EXPECT_EQ(dir->addFileWrapper(nullptr), u"");
  EXPECT_EQ(dir->addFileWrapper(dir), u"");
}

TEST(FileWrapper, WritesAndReadsADirectoryTree) {
  TempDir temp;
  auto tree = sampleTree();
  ErrorPtr error;
  ASSERT_TRUE(tree->writeToPath(temp.path16("Doc.rtfd"), false, &error))
      << toUTF8(error ? error->localizedDescription() : u"");
  EXPECT_EQ(fileText(temp.path("Doc.rtfd/TXT.rtf")), "{\\rtf1 hello}");
  EXPECT_EQ(fileText(temp.path("Doc.rtfd/Files/caf\xc3\xa9.txt")), "caf\xc3\xa9");

  auto read = FileWrapper::createWithPath(temp.path16("Doc.rtfd"), &error);
  ASSERT_NE(read, nullptr);
  expectSameTree(*read, *tree);
  EXPECT_EQ(read->filename(), u"Doc.rtfd");
}

TEST(FileWrapper, AtomicWritesReplaceWholeAndLeaveNothingBehind) {
  TempDir temp;
  auto first = FileWrapper::createDirectory();
  first->addRegularFileWithContents(Data::fromString("old"), u"old.txt");
  ASSERT_TRUE(first->writeToPath(temp.path16("Pkg"), true, nullptr));
  auto second = FileWrapper::createDirectory();
  second->addRegularFileWithContents(Data::fromString("new"), u"new.txt");
  ASSERT_TRUE(second->writeToPath(temp.path16("Pkg"), true, nullptr));

  auto read = FileWrapper::createWithPath(temp.path16("Pkg"));
  ASSERT_NE(read, nullptr);
  expectSameTree(*read, *second);
  EXPECT_EQ(temp.list(), std::vector<std::string>{"Pkg"}) << "no temporary items left";

  // In place, a directory is merged into the one that is there.
  ASSERT_TRUE(first->writeToPath(temp.path16("Pkg"), false, nullptr));
  EXPECT_EQ(FileWrapper::createWithPath(temp.path16("Pkg"))->children().size(), 2u);

  ErrorPtr error;
  EXPECT_FALSE(second->writeToPath(temp.path16("missing/dir/Pkg"), true, &error));
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->code(), ENOENT);
  // Reading what is not there fails and changes nothing.
  auto keep = FileWrapper::createRegularFile(Data::fromString("kept"));
  EXPECT_FALSE(keep->readFromPath(temp.path16("nothing")));
  EXPECT_EQ(keep->regularFileContents().view(), "kept");
}

TEST(FileWrapper, SerializedFormRoundTrips) {
  auto tree = sampleTree();
  tree->setFilename(u"Doc.rtfd");
  tree->setModificationDate(Date(700000000.5));
  Data flat = tree->serializedRepresentation();
  auto back = FileWrapper::createWithSerializedRepresentation(flat);
  ASSERT_NE(back, nullptr);
  expectSameTree(*back, *tree);
  EXPECT_EQ(back->filename(), u"Doc.rtfd");
  EXPECT_EQ(back->modificationDate(), tree->modificationDate());
  EXPECT_EQ(back->serializedRepresentation(), flat) << "stable";
}

TEST(FileWrapper, SerializedFormRefusesBadBytes) {
  Data flat = sampleTree()->serializedRepresentation();
  auto bytes = flat.toVector();
  for (size_t length = 0; length < bytes.size(); ++length)
    EXPECT_EQ(FileWrapper::createWithSerializedRepresentation(Data(bytes.data(), length)), nullptr)
        << "truncated to " << length;

  // The flat form of `dir` with the first `from` replaced by `to`.
  auto patched = [](const FileWrapper &dir, std::string_view from, std::string_view to) {
    Data flat = dir.serializedRepresentation();
    std::string text(flat.view());
    text.replace(text.find(from), from.size(), to);
    return Data::fromString(text);
  };
  auto dir = FileWrapper::createDirectory();
  dir->addRegularFileWithContents(Data(), u"ab");
  EXPECT_EQ(FileWrapper::createWithSerializedRepresentation(patched(*dir, "VLFW", "XLFW")),
            nullptr);
  // Unsafe keys are refused, not repaired (the key comes before the names inside the child).
  for (std::string_view bad :
       {std::string_view(".."), std::string_view("a/"), std::string_view("a\0", 2)})
    EXPECT_EQ(FileWrapper::createWithSerializedRepresentation(patched(*dir, "ab", bad)), nullptr);
  // Keys out of order or repeated are refused: one tree has one flat form.
  dir->addRegularFileWithContents(Data(), u"cd");
  for (std::string_view second : {"aa", "ab"})
    EXPECT_EQ(FileWrapper::createWithSerializedRepresentation(patched(*dir, "cd", second)),
              nullptr);

  // A huge child count in a few bytes is refused without allocating for it.
  std::vector<uint8_t> huge = {'V', 'L', 'F', 'W', 1, 2,    0,    0,    0,   0,
                               0,   0,   0,   0,   0, 0xFF, 0xFF, 0xFF, 0xFF};
  EXPECT_EQ(FileWrapper::createWithSerializedRepresentation(Data(huge)), nullptr);
}

TEST(FileWrapper, Archives) {
  auto tree = sampleTree();
  auto back = KeyedUnarchiver::unarchiveObjectWithData(
                  KeyedArchiver::archivedDataWithRootObject(Value(tree)))
                  .as<FileWrapper>();
  ASSERT_NE(back, nullptr);
  expectSameTree(*back, *tree);
}

TEST(TextAttachment, CellTakesTheSizeOfTheWrappedImage) {
  auto image = Image::createWithPixels(40, 20, std::vector<uint8_t>(40 * 20 * 4, 0x80));
  ASSERT_NE(image, nullptr);
  auto attachment = TextAttachment::create(
      FileWrapper::createRegularFile(image->representationUsingType(ImageFileTypePNG)));
  auto cell = attachment->attachmentCell();
  ASSERT_NE(cell, nullptr);
  EXPECT_EQ(cell->cellSize(), (Size{40, 20}));

  auto chosen = TextAttachmentCell::create();
  attachment->setAttachmentCell(chosen);
  attachment->setFileWrapper(FileWrapper::createRegularFile(Data::fromString("not an image")));
  EXPECT_EQ(attachment->attachmentCell(), chosen) << "a cell that was set stays";
  EXPECT_NE(TextAttachment().attachmentCell(), nullptr) << "even without a wrapper";
}

TEST(TextAttachment, OneCharacterCarriesTheAttachmentAndItArchives) {
  auto attachment = TextAttachment::create(FileWrapper::createRegularFile(Data()));
  auto form = TextAttachment::attributedStringWithAttachment(attachment);
  EXPECT_EQ(form.string, u"\uFFFC");
  EXPECT_EQ(form.attribute.as<TextAttachment>(), attachment);
  auto back = KeyedUnarchiver::unarchiveObjectWithData(
                  KeyedArchiver::archivedDataWithRootObject(Value(attachment)))
                  .as<TextAttachment>();
  ASSERT_NE(back, nullptr);
  ASSERT_NE(back->fileWrapper(), nullptr);
  EXPECT_TRUE(back->fileWrapper()->isRegularFile());
}
