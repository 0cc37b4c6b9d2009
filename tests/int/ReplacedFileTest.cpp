// Files come under their names as a whole or not at all, wherever links lead and whatever fails.
#include "common/ReplacedFile.h"

#include <sys/mman.h>

#include "Helpers.h"
#include "support/TemporaryDirectory.h"

namespace VELTRO::KELVO::Test {
namespace {

namespace fs = std::filesystem;

// A tree of files in a directory of its own.
struct Tree : TemporaryDirectory {
  using Names =
      std::map<std::string, std::string>;  // each with the content; of a link "-> " and where it leads

  explicit Tree(const Names& names) {
    for (const auto& [name, content] : names) {
      fs::create_directories(At(name).parent_path());
      if (content.starts_with("-> ")) {
        fs::create_symlink(content.substr(3) == "/" ? At("absolute") : fs::path(content.substr(3)), At(name));
      } else {
        std::ofstream(At(name)) << content;
      }
    }
  }
  fs::path At(const std::string& name) const { return fs::path(Path) / name; }
  Names Found() const {
    Names names;
    for (const auto& entry : fs::recursive_directory_iterator(Path)) {
      const std::string name = entry.path().lexically_relative(Path);
      if (entry.is_symlink()) {
        const fs::path leads = fs::read_symlink(entry.path());
        names[name] = "-> " + (leads.is_absolute() ? "/" : leads.string());
      } else if (entry.is_regular_file()) {
        names[name] = ContentOf(entry.path());
      }
    }
    return names;
  }
};

std::string Replace(const std::string& path, const std::string& content = "new") {
  return Failure([&] {
    ReplacedFile file(path);
    file.Write(content);
    file.Commit();
  });
}

TEST(ReplacedFiles, AreWhatLinksLeadTo) {
  struct Row {
    const char* path;
    Tree::Names before;
    const char* written;
    const char* failure = "no failure";
  };
  const Row rows[] = {
      {"file", {}, "file"},
      {"file", {{"file", "old content"}}, "file"},
      {"link", {{"link", "-> file"}, {"file", "old"}}, "file"},
      {"link", {{"link", "-> none"}}, "none"},
      {"in/link", {{"in/link", "-> none"}, {"none", "other"}}, "in/none"},
      {"in/link", {{"in/link", "-> ../out/file"}, {"out/file", "old"}, {"file", "other"}}, "out/file"},
      {"a", {{"a", "-> in/b"}, {"in/b", "-> c"}, {"in/c", "-> ../d"}, {"d", "old"}}, "d"},
      {"a", {{"a", "-> in/b"}, {"in/b", "-> c"}}, "in/c"},
      {"link", {{"link", "-> /"}, {"absolute", "old"}}, "absolute"},
      {"folder/file", {{"folder", "-> in/deep"}, {"in/deep/file", "old"}}, "in/deep/file"},
      {"folder/link", {{"folder", "-> in/deep"}, {"in/deep/link", "-> ../x"}}, "in/x"},
      {".//file", {}, "file"},
      {"a", {{"a", "-> b"}, {"b", "-> a"}}, nullptr, "Too many levels of symbolic links"},
      {"a", {{"a", "-> a"}}, nullptr, "Too many levels of symbolic links"},
      {"link", {{"link", "-> none/"}}, nullptr, "Is a directory"},
      {"link", {{"link", "-> no/file"}}, nullptr, "No such file or directory"},
      {"no/file", {}, nullptr, "No such file or directory"},
      {"file/", {}, nullptr, "Is a directory"},
      {"file/", {{"file", "old"}}, nullptr, "Not a directory"},
      {"", {{"x", "old"}}, nullptr, "Is a directory"},
      {"file/x", {{"file", "old"}}, nullptr, "Not a directory"},
      {"link", {{"link", "-> in"}, {"in/x", "old"}}, nullptr, "Is a directory"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.path) + " of " + testing::PrintToString(row.before));
    const Tree tree(row.before);
    EXPECT_EQ(Replace(tree.Path + "/" + row.path), row.failure);
    Tree::Names expected = row.before;
    if (row.written != nullptr) expected[row.written] = "new";
    EXPECT_EQ(tree.Found(), expected);
  }
  EXPECT_EQ(Replace(""), "No such file or directory");
}

TEST(ReplacedFiles, StayAsTheyWereUntilAllIsThere) {
  const Tree::Names old = {{"file", "old"}, {"link", "-> file"}};
  const Tree tree(old);
  const rlimit unlimited{RLIM_INFINITY, RLIM_INFINITY}, few{5, RLIM_INFINITY};
  const auto before = std::signal(SIGXFSZ, SIG_IGN);
  {
    ReplacedFile left(tree.At("file")), broken(tree.At("file"));
    left.Write("half");
    EXPECT_GT(left.GetFreeBytes().value_or(0), 0U);
    EXPECT_EQ(tree.Found().size(), 4U) << "each has a file of its own";
    for (const auto& entry : fs::directory_iterator(tree.Path)) {
      const std::string name = entry.path().filename();
      EXPECT_EQ(ReplacedFile::IsTemporary(name), !old.contains(name)) << name;
    }
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &few), 0);
    EXPECT_FAILURE(broken.Write("123456"), "File too large");
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &unlimited), 0);
  }
  std::signal(SIGXFSZ, before);
  EXPECT_EQ(tree.Found(), old);
}

TEST(ReplacedFiles, KeepTheirPermissionsTheirOwnerAndTheirReaders) {
  const Tree tree(Tree::Names{{"file", "old"}});
  const std::string path = tree.At("file");
  const uid_t owner = geteuid() == 0 ? 12 : geteuid();
  fs::permissions(path, fs::perms(0604));
  EXPECT_EQ(chown(path.c_str(), owner, getegid()), 0);
  std::ifstream reader(path);
  EXPECT_EQ(Replace(path), "no failure");
  struct stat status {};
  EXPECT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0604U);
  EXPECT_EQ(status.st_uid, owner);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(reader.rdbuf()), {}), "old");
}

TEST(ReplacedFiles, AreWhereTheyWereBegun) {
  const Tree tree(Tree::Names{{"link", "-> file"}});
  const std::string longest(255, 'n');
  const fs::path here = fs::current_path();
  fs::current_path(tree.Path);
  ReplacedFile moved("moved");
  moved.Write("x");
  fs::current_path("/");
  moved.Commit();
  fs::current_path(here);
  const Descriptor directory(open(tree.Path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  ReplacedFile named(directory.Get(), "link");
  named.Write("no link");
  named.Commit();
  EXPECT_EQ(Replace(tree.At(longest)), "no failure");
  EXPECT_EQ(tree.Found(), (Tree::Names{{"link", "no link"}, {"moved", "x"}, {longest, "new"}}));
}

TEST(ReplacedFiles, DoNotComeWhereADirectoryIsOrNobodyMayWrite) {
  const Tree tree(Tree::Names{{"file", "old"}});
  const std::string taken = tree.At("taken"), path = tree.At("file");
  ReplacedFile file(taken);
  fs::create_directory(taken);
  EXPECT_FAILURE(file.Commit(), "Is a directory");
  if (geteuid() != 0) return;
  fs::permissions(tree.Path, fs::perms(0777));
  ASSERT_EQ(seteuid(65534), 0);
  EXPECT_EQ(Replace(path), "Permission denied");
  EXPECT_EQ(seteuid(0), 0);
  EXPECT_EQ(ContentOf(path), "old");
}

TEST(ReplacedFiles, AreWrittenDirectlyWhenTheyAreNoPlainFiles) {
  EXPECT_EQ(Replace(Device("null")), "no failure");
  EXPECT_TRUE(fs::is_character_file(Device("null")));
  EXPECT_EQ(Replace(Device("full")), "No space left on device");
  EXPECT_FALSE(ReplacedFile(Device("null")).GetFreeBytes());
  const Descriptor unnamed(memfd_create("unnamed", MFD_CLOEXEC));
  const std::string place = "/proc/self/fd/" + std::to_string(unnamed.Get());
  ReplacedFile::WriteAll(unnamed.Get(), Unsigned("longer than before"));
  EXPECT_EQ(Replace(place), "no failure");
  EXPECT_EQ(ContentOf(place), "new");
}

TEST(ReplacedFiles, AreNotWrittenThroughWhatLiesInTheirWay) {
  const Tree tree(Tree::Names{{"other", "another's"}});
  std::string latest;
  {
    const ReplacedFile file(tree.At("file"));
    for (const auto& [name, content] : tree.Found()) latest = std::min(name, latest.empty() ? name : latest);
  }
  ASSERT_TRUE(ReplacedFile::IsTemporary(latest)) << latest;
  // The names that come next are known to whoever looks.
  const std::size_t number = latest.rfind('-') + 1;
  const auto next = [&](int more) {
    return latest.substr(0, number) + std::to_string(std::stoi(latest.substr(number)) + more) + ".part";
  };
  fs::create_symlink("other", tree.At(next(1)));
  std::ofstream(tree.At(next(2))) << "left over";
  EXPECT_EQ(Replace(tree.At("file")), "no failure");
  EXPECT_EQ(
      tree.Found(),
      (Tree::Names{{next(1), "-> other"}, {next(2), "left over"}, {"file", "new"}, {"other", "another's"}}));
}

TEST(ReplacedFiles, MayBePipesThatNobodyReads) {
  const Tree tree({});
  const std::string path = tree.At("pipe");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  Descriptor reader(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  char read[9] = "";
  ReplacedFile pipe(path);
  pipe.Write("bytes");
  EXPECT_EQ(::read(reader.Get(), read, sizeof read), 5);
  reader.Close();
  EXPECT_FAILURE(pipe.Write("bytes"), "Broken pipe") << "and no signal";
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
