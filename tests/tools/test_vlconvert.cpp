// vlconvert, run as a user runs it: conversions, the JSON description, failures that leave no
// output, and usage errors.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

std::string slurp(const fs::path &path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void spit(const fs::path &path, const std::string &bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

std::string word(uint32_t value) {
  return {static_cast<char>(value >> 24), static_cast<char>(value >> 16),
          static_cast<char>(value >> 8), static_cast<char>(value)};
}

std::string fcfRecord(uint32_t type, const std::string &text) {
  return "FTXT" + word(static_cast<uint32_t>(text.size() + 4)) + word(type) + text;
}

const std::string FCFHeader = "FCF2" + word(1) + word(0) + word(0) + word(0);

struct Outcome {
  int status = -1;
  std::string out;
  std::vector<std::string> errLines;
};

class VLConvert : public ::testing::Test {
protected:
  void SetUp() override {
#ifndef VLCONVERT
    GTEST_SKIP() << "built without the vlconvert host";
#endif
    std::string pattern = (fs::temp_directory_path() / "vlconvert-test-XXXXXX").string();
    ASSERT_TRUE(mkdtemp(pattern.data()));
    dir_ = pattern;
    script_ = dir_ / "script.fcf";
    spit(script_, FCFHeader + fcfRecord(1, "INT. LIGHTHOUSE - NIGHT\r") +
                      fcfRecord(2, "Waves hammer the rocks.\r") + fcfRecord(3, "NELL\r") +
                      fcfRecord(4, "(shouting)\r") + fcfRecord(5, "Light it!\r") +
                      fcfRecord(6, "CUT TO:\r"));
  }
  void TearDown() override {
    if (!dir_.empty())
      fs::remove_all(dir_);
  }

  Outcome run(const std::vector<std::string> &arguments) {
#ifdef VLCONVERT
    std::string command = std::string("'") + VLCONVERT + "'";
    for (const std::string &argument : arguments)
      command += " '" + argument + "'";
    command += " >'" + (dir_ / ".out").string() + "' 2>'" + (dir_ / ".err").string() + "'";
    Outcome result;
    int raw = std::system(command.c_str());
    result.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    result.out = slurp(dir_ / ".out");
    std::string err = slurp(dir_ / ".err");
    for (size_t start = 0; start < err.size();) {
      size_t end = err.find('\n', start);
      if (end == std::string::npos)
        end = err.size();
      result.errLines.push_back(err.substr(start, end - start));
      start = end + 1;
    }
    fs::remove(dir_ / ".out");
    fs::remove(dir_ / ".err");
    return result;
#else
    (void)arguments;
    return {};
#endif
  }

  /// The names in the working folder, hidden ones included, but the script itself.
  std::vector<std::string> others() const {
    std::vector<std::string> names;
    for (const auto &entry : fs::directory_iterator(dir_))
      if (entry.path() != script_)
        names.push_back(entry.path().filename().string());
    return names;
  }

  std::string path(const std::string &name) const {
    return (dir_ / name).string();
  }

  fs::path dir_;
  fs::path script_;
};

} // namespace

TEST_F(VLConvert, FCFToFCFIsByteForByte) {
  Outcome r = run({script_.string(), path("copy.fcf")});
  EXPECT_EQ(r.status, 0);
  EXPECT_TRUE(r.errLines.empty());
  EXPECT_EQ(slurp(path("copy.fcf")), slurp(script_));
}

TEST_F(VLConvert, FormatNamesOverrideExtensions) {
  fs::copy_file(script_, path("script.bin"));
  Outcome r = run({"--from", "FCF", "--to=fcf", path("script.bin"), path("out.txt")});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(slurp(path("out.txt")), slurp(script_));
}

TEST_F(VLConvert, JSONDescribesTheDocument) {
  ASSERT_EQ(run({script_.string(), path("script.json")}).status, 0);
  json doc = json::parse(slurp(path("script.json")));
  for (const char *key : {"length", "paragraphs", "outline", "markers", "stylesheet", "masterPages",
                          "settings", "documentAttributes"})
    EXPECT_TRUE(doc.contains(key)) << key;

  const json &paragraphs = doc["paragraphs"];
  ASSERT_EQ(paragraphs.size(), 6u);
  EXPECT_EQ(paragraphs[0]["text"], "INT. LIGHTHOUSE - NIGHT");
  EXPECT_EQ(paragraphs[0]["range"], (json{{"location", 0}, {"length", 24}}));
  EXPECT_EQ(paragraphs[0]["style"]["styleName"], "Scene_20_Heading");
  EXPECT_EQ(paragraphs[0]["style"]["displayName"], "Scene Heading");
  EXPECT_EQ(paragraphs[4]["style"]["styleName"], "Dialogue");
  const json &firstRun = paragraphs[1]["runs"][0];
  EXPECT_EQ(firstRun["range"], (json{{"location", 24}, {"length", 23}}));
  EXPECT_EQ(firstRun["size"], 12.0);
  EXPECT_EQ(firstRun["bold"], false);
  EXPECT_TRUE(firstRun["link"].is_null());

  bool found = false;
  for (const json &style : doc["stylesheet"]["styles"])
    if (style["styleName"] == "Character") {
      found = true;
      EXPECT_EQ(style["next"], "Dialogue");
      EXPECT_EQ(style["tab"], "Transition");
      EXPECT_EQ(style["parent"], "Default_20_Style");
    }
  EXPECT_TRUE(found);
  EXPECT_EQ(doc["masterPages"][0]["key"], "Standard");
  EXPECT_EQ(doc["settings"]["documentSettings"]["completions"]["sceneIntros"][2]["stringValue"],
            "I/E");

  // The same input gives the same text.
  ASSERT_EQ(run({script_.string(), path("again.json")}).status, 0);
  EXPECT_EQ(slurp(path("again.json")), slurp(path("script.json")));
}

TEST_F(VLConvert, FountainSampleToJSONAndFCF) {
  const std::string sample = std::string(VL_SOURCE_DIR) + "/samples/the-lighthouse-keeper";
  ASSERT_EQ(run({sample + ".fountain", path("sample.json")}).status, 0);
  json doc = json::parse(slurp(path("sample.json")));
  ASSERT_FALSE(doc["outline"].empty());
  EXPECT_EQ(doc["outline"][0]["title"], "ACT ONE");
  bool comment = false;
  for (const json &marker : doc["markers"])
    comment = comment || (marker["type"] == 1 && marker["inText"] == true &&
                          marker["text"].get<std::string>().starts_with("Establish the lamp"));
  EXPECT_TRUE(comment);
  EXPECT_EQ(doc["settings"]["documentSettings"]["completions"]["characters"][0]["stringValue"],
            "NELL");

  // Back to Fountain: the synopsis returns after its section through the outline; the notes
  // (point comments), boneyard and title page lines other than title and author do not.
  ASSERT_EQ(run({sample + ".fountain", path("again.fountain")}).status, 0);
  const std::string again = slurp(path("again.fountain"));
  EXPECT_TRUE(again.starts_with("#ACT ONE\n\n=Nell keeps the light burning")) << again;
  EXPECT_EQ(again.find("[["), std::string::npos);
  EXPECT_EQ(again.find("/*"), std::string::npos);

  // The FCF sample is this conversion, kept in step with the reader.
  ASSERT_EQ(run({sample + ".fountain", path("sample.fcf")}).status, 0);
  EXPECT_EQ(slurp(path("sample.fcf")), slurp(sample + ".fcf"));
}

TEST_F(VLConvert, FCFThroughFountainAndBackIsByteForByte) {
  ASSERT_EQ(run({script_.string(), path("script.fountain")}).status, 0);
  EXPECT_NE(slurp(path("script.fountain")).find("INT. LIGHTHOUSE - NIGHT\n"), std::string::npos);
  ASSERT_EQ(run({path("script.fountain"), path("back.fcf")}).status, 0);
  EXPECT_EQ(slurp(path("back.fcf")), slurp(script_));
  // Fountain to Fountain settles after one pass.
  ASSERT_EQ(run({path("script.fountain"), path("again.fountain")}).status, 0);
  EXPECT_EQ(slurp(path("again.fountain")), slurp(path("script.fountain")));
}

TEST_F(VLConvert, BadInputGivesOneLineAndNoOutput) {
  const std::string before = slurp(script_);
  spit(path("bad.fcf"), "RIFF" + word(0) + word(0));
  spit(path("cut.fcf"), FCFHeader + "FTXT" + word(400) + word(2) + "short");
  fs::create_directory(path("folder.fcf"));

  struct Case {
    std::string input, output, expected;
  } cases[] = {
      {path("bad.fcf"), path("bad.json"), path("bad.fcf") + ": not an FCF file (bad magic)"},
      {path("cut.fcf"), path("cut.json"), path("cut.fcf") + ": corrupt FCF file"},
      {path("missing.fcf"), path("missing.json"), path("missing.fcf") + ": cannot read ("},
      {path("folder.fcf"), path("folder.json"), path("folder.fcf") + ": cannot read ("},
      {script_.string(), path("no/such/dir/out.json"),
       path("no/such/dir/out.json") + ": cannot write ("},
  };
  for (const Case &c : cases) {
    Outcome r = run({c.input, c.output});
    EXPECT_EQ(r.status, 1) << c.input;
    ASSERT_EQ(r.errLines.size(), 1u) << c.input;
    EXPECT_EQ(r.errLines[0].rfind("vlconvert: " + c.expected, 0), 0u) << r.errLines[0];
    EXPECT_FALSE(fs::exists(c.output)) << c.output;
  }
  // Nothing but the inputs is left behind: no output, no temporary file.
  std::vector<std::string> left = others();
  std::sort(left.begin(), left.end());
  EXPECT_EQ(left, (std::vector<std::string>{"bad.fcf", "cut.fcf", "folder.fcf"}));
  EXPECT_EQ(slurp(script_), before);
}

TEST_F(VLConvert, UnwritableFolderLeavesNothing) {
  if (geteuid() == 0)
    GTEST_SKIP() << "root writes anywhere";
  fs::create_directory(path("locked"));
  fs::permissions(path("locked"), fs::perms::owner_read | fs::perms::owner_exec);
  Outcome r = run({script_.string(), path("locked/out.json")});
  fs::permissions(path("locked"), fs::perms::owner_all);
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.errLines.size(), 1u);
  EXPECT_TRUE(fs::is_empty(path("locked")));
}

TEST_F(VLConvert, UsageErrorsExitTwo) {
  const std::string before = slurp(script_);
  const std::vector<std::vector<std::string>> cases = {
      {},
      {script_.string()},
      {script_.string(), path("a.json"), path("b.json")},
      {"--frobnicate", script_.string(), path("a.json")},
      {"--from", "docx", script_.string(), path("a.json")},
      {"--to"},
      {script_.string(), path("a.unknown")},
      {path("a.json"), path("b.fcf")},
      {script_.string(), script_.string()},
      {script_.string(), (dir_ / "." / "script.fcf").string()},
  };
  for (const auto &arguments : cases) {
    Outcome r = run(arguments);
    EXPECT_EQ(r.status, 2) << ::testing::PrintToString(arguments);
    EXPECT_EQ(r.errLines.size(), 1u) << ::testing::PrintToString(arguments);
  }
  EXPECT_EQ(slurp(script_), before);
  EXPECT_TRUE(others().empty());
}

TEST_F(VLConvert, HelpAndVersion) {
  Outcome help = run({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_NE(help.out.find("usage: vlconvert"), std::string::npos);
  EXPECT_NE(help.out.find("fcf"), std::string::npos);
  Outcome version = run({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.out.rfind("vlconvert ", 0), 0u);
}
