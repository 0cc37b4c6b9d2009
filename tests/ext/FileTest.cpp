// Files through the flat functions: on a virtual card in another process, and on cards that misbehave.
#include "ext/FileCard.h"
#include "int/CardProcess.h"

namespace VELTRO::KELVO::Test {
namespace {

namespace fs = std::filesystem;

TEST(Files, ComeBackAsTheyWereSent) {
  const CardConnection c;
  const Folder folder;
  const std::string sent = folder / "sent", back = folder / "back";
  struct Progress {
    std::uint64_t calls = 0, moved = 0, whole = 0;
  };
  constexpr vlFileProgressCallback Count = [](void* user, std::uint64_t moved, std::uint64_t whole) {
    Progress& progress = *static_cast<Progress*>(user);
    const bool isNext = moved == std::min<std::uint64_t>(progress.moved + 8192, whole);
    progress = {progress.calls + 1, moved, whole};
    return isNext;
  };
  for (const std::size_t size : {0U, 1U, 8191U, 8192U, 8193U, (ThreadSanitized ? 4U : 64U) << 20}) {
    const std::string bytes = Noise(size);
    Folder::Write(sent, bytes);
    Progress up, down;
    EXPECT_OK(vlFilePut(c, vlDirectorySelector_JOBFILES, "file", sent.c_str(), Count, &up)) << size;
    EXPECT_OK(vlFileGet(c, vlDirectorySelector_JOBFILES, "file", back.c_str(), Count, &down)) << size;
    EXPECT_TRUE(ContentOf(back) == bytes) << size;
    for (const Progress& p : {up, down}) {
      EXPECT_TRUE(p.calls == (size + 8191) / 8192 && p.moved == size && p.whole == size) << size;
    }
  }
  EXPECT_TRUE(ResidentBytes() < (200 << 20) || Sanitized) << "of which the test takes two times 64 MiB";
}

// A transfer between a card's file and a local one, each of which may be there or not, and what is to become of it.
constexpr bool Up = true, Down = false;
struct Transfer {
  bool isUpload;
  std::string outcome, calls;
  std::size_t size = 20000;
  const char* wrong = "";  // the method that is answered as `answer` does
  Answer answer = Silence;
  int pieces = 99;                        // after which the callback ends it
  std::optional<std::string> local = {};  // in place of one in a folder of the test's own
};

// Whatever becomes of it, it ends in time, with the card's file closed, and the local one is whole: the old or the new.
void ExpectTransfer(const Transfer& row) {
  const Folder folder;
  FileCard card{std::string(row.size, 'x'), row.wrong, row.answer};
  const std::string local = row.local.value_or(folder / "local"),
                    before = row.isUpload ? card.Content : "before";
  Folder::Write(folder / "local", before);
  fs::permissions(folder / "local", fs::perms(0640));
  {
    constexpr vlFileProgressCallback Cancel = [](void* left, std::uint64_t, std::uint64_t) {
      return --*static_cast<int*>(left) > 0;
    };
    const Connection c(card.Card.Port());
    const std::uint32_t timeout = *row.wrong && row.answer(Request()).empty() ? 3000 : 17000;
    EXPECT_OK(vlSetTimeout(c, timeout));
    // A connection that is called often takes a descriptor more, once.
    const std::size_t first = OpenDescriptors();
    for (const Stopwatch watch; OpenDescriptors() == first && watch.Milliseconds() < 60000;) {
      bool exists = false;
      EXPECT_OK(vlFileExists(c, vlDirectorySelector_CORRFILES, "file", &exists));
    }
    card.TakeCalls();
    const std::size_t descriptors = OpenDescriptors();
    int pieces = row.pieces;
    const Stopwatch watch;
    const auto transfer = row.isUpload ? vlFilePut : vlFileGet;
    EXPECT_EQ(Outcome(transfer(c, vlDirectorySelector_CORRFILES, "file", local.c_str(), Cancel, &pieces)),
              row.outcome);
    EXPECT_LT(watch.Milliseconds(), 2 * timeout - 10) << "it waited twice";
    EXPECT_EQ(OpenDescriptors(), descriptors);
  }
  const bool isReplaced = !row.isUpload && row.outcome == "0" && !row.local;
  EXPECT_EQ(folder.Content(), "local=" + (isReplaced ? card.Content : before) + " ");
  EXPECT_EQ(fs::status(folder / "local").permissions(), fs::perms(0640));
  EXPECT_EQ(card.TakeCalls(row.calls.size()), row.calls) << "a close that nobody waits for is on its way";
}

void ExpectTransfers(std::span<const Transfer> rows) {
  for (const Transfer& row : rows) {
    SCOPED_TRACE((row.isUpload ? "up, " : "down, ") + row.calls + row.wrong + row.local.value_or("") + " " +
                 row.outcome);
    ExpectTransfer(row);
  }
}

TEST(Files, TravelInPieces) {
  const Transfer rows[] = {
      {Up, "0", "GetHandle Open Write Write Write Close "},
      {Up, "0", "GetHandle Open Close ", 0},
      {Up, "0", "GetHandle Open Write Write Close ", 8193},
      {Up, "0", "GetHandle Close Open Write Close ", 8192, "GetFileHandle", Always(0)},
      {Down, "0", "Open GetSize Read Read Read Close "},
      {Down, "0", "Open GetSize Close ", 0},
      {Down, "0", "Open GetSize Read Read Read Close ", 9, "FileRead", Bytes(3)},
  };
  ExpectTransfers(rows);
}

TEST(Files, AreClosedWhateverTheCardAnswers) {
  const char* const silent = "Response was not received in the given timespan.";
  const Transfer rows[] = {
      {Up, "Refused.", "GetHandle ", 9, "GetFileHandle", Refused},
      {Up, "Refused.", "GetHandle Open ", 9, "FileOpen", Refused},
      {Up, "Refused.", "GetHandle Open Write Close ", 20000, "FileWrite", Refused},
      {Up, silent, "GetHandle Open Write Close ", 20000, "FileWrite", Silence},
      {Up, "0", "GetHandle Open Write Close ", 5, "FileClose", Refused},
      {Down, "The card's file ended early.", "Open GetSize Read Close ", 20000, "FileRead", Bytes(0)},
      {Down, "The card sent more than it was asked for.", "Open GetSize Read Close ", 20000, "FileRead",
       Bytes(8193)},
      {Down, "std::bad_cast", "Open GetSize Read Close ", 20000, "FileRead", Always(std::vector<int>{1})},
      {Down, silent, "Open GetSize Read Close ", 20000, "FileRead", Silence},
      {Down, "std::bad_cast", "Open GetSize Close ", 20000, "FileGetSize", Always(-1)},
      {Down, "Refused.", "Open GetSize Close ", 20000, "FileGetSize", Refused},
      {Down, "std::bad_cast", "Open ", 20000, "FileOpen", Always("x")},
  };
  ExpectTransfers(rows);
}

TEST(Files, AreClosedWhenTheTransferIsCancelled) {
  const Transfer rows[] = {
      {Up, "The transfer was cancelled.", "GetHandle Open Write Write Close ", 20000, "", Silence, 2},
      {Down, "The transfer was cancelled.", "Open GetSize Read Read Read Close ", 20000, "", Silence, 3},
  };
  ExpectTransfers(rows);
}

TEST(Files, NeedAPlaceHereThatCanBeReadOrWritten) {
  std::vector<Transfer> rows = {
      {Up, "Error in stream", "GetHandle Open Close ", 5, "", Silence, 99, "/proc/self/mem"},
      {Down, "Error in stream", "Open GetSize Read Close ", 5, "", Silence, 99, Device("full")},
      {Down, "0", "Open GetSize Read Close ", 5, "", Silence, 99, Device("null")},
  };
  for (const char* none : {"/tmp", "/no/such"})
    rows.push_back({Up, "Unable to open the local file!", "", 5, "", Silence, 99, none});
  for (const char* none : {"/tmp", "/tmp/no/such", "/no/", ""})
    rows.push_back({Down, "Unable to open the local file!", "", 5, "", Silence, 99, none});
  ExpectTransfers(rows);
}

TEST(Files, AreNotWaitedForWithoutEnd) {
  const char* const slow = "The card sends the file too slowly.";
  struct Row {
    std::size_t size, answer;  // bytes
    int pause, work;           // milliseconds of the card for an answer, and of the callback
    const char* outcome;
  };
  constexpr std::uint32_t Timeout = 6000;
  const Row rows[] = {{20000, 1, 40, 0, slow},         {8192 + 20, 1000, 800, 0, slow},
                      {8192 + 20, 8192, 3200, 0, "0"}, {20000, 4096, 1300, 0, "0"},
                      {5000, 250, 0, 0, "0"},          {20, 5, 0, 1600, "0"}};
  Together(std::size(rows), [&](std::uint32_t number) {
    const Row& row = rows[number];
    SCOPED_TRACE(number);
    const Folder folder;
    std::size_t left = row.size;
    FileCard card{std::string(row.size, 'x'), "FileRead", [&](const Request& r) {
                    usleep(static_cast<useconds_t>(row.pause) * 1000);
                    const std::size_t asked = std::get<1>(r.Arguments->as<std::tuple<int, unsigned>>());
                    const std::size_t count = std::min({row.answer, left, asked});
                    left -= count;
                    return Response(r.Id, std::vector<unsigned char>(count, 'x'));
                  }};
    const Connection c(card.Card.Port());
    EXPECT_OK(vlSetTimeout(c, Timeout));
    int work = row.work;
    constexpr vlFileProgressCallback Work = [](void* milliseconds, std::uint64_t, std::uint64_t) {
      return usleep(static_cast<useconds_t>(*static_cast<int*>(milliseconds)) * 1000) == 0;
    };
    const Stopwatch watch;
    EXPECT_EQ(Outcome(vlFileGet(c, 1, "file", (folder / "local").c_str(), Work, &work)), row.outcome);
    EXPECT_LT(watch.Milliseconds(), 3 * Timeout);
    EXPECT_EQ(folder.Content().empty(), std::string(row.outcome) != "0");
  });
}

TEST(Files, AreNotFetchedBeyondTheRoomOnTheDisk) {
  const Folder folder;
  FileCard card{"", "FileGetSize", Always(std::uint64_t{1} << 62)};
  const Connection c(card.Card.Port());
  EXPECT_FAILS(vlFileGet(c, 1, "file", (folder / "local").c_str(), nullptr, nullptr),
               "The local disk has no room for the file.");
  EXPECT_EQ(card.TakeCalls(), "Open GetSize Close ");
  EXPECT_EQ(folder.Content(), "");
  EXPECT_FAILS(vlFileGet(c, 1, "file", Device("null").c_str(), nullptr, nullptr),
               "The card's file ended early.");
}

TEST(Files, SurviveTheEndOfTheConnectionAnywhere) {
  const Folder folder;
  const std::string content = Noise(5 * 8192 + 100), local = folder / "local";
  FileCard card{content};
  for (const bool isUpload : {true, false}) {
    const auto transfer = [&](std::int32_t c) {
      return (isUpload ? vlFilePut : vlFileGet)(c, vlDirectorySelector_CORRFILES, "file", local.c_str(),
                                                nullptr, nullptr);
    };
    const int calls = 2 + 6;
    for (int cut = 0; cut < calls; ++cut) {
      SCOPED_TRACE((isUpload ? "up " : "down ") + std::to_string(cut));
      const std::string before = isUpload ? content : "before";
      Folder::Write(local, before);
      card.Cut = cut;
      const Connection broken(card.Card.Port());
      const std::size_t descriptors = OpenDescriptors();
      const Stopwatch watch;
      EXPECT_FAILS(transfer(broken), "ConnectionAborted");
      EXPECT_LT(watch.Milliseconds(), 10000);
      EXPECT_LE(OpenDescriptors(), descriptors);
      EXPECT_EQ(folder.Content(), "local=" + before + " ");
      card.Cut = -1;
      const Connection sound(card.Card.Port());
      EXPECT_OK(transfer(sound));
      EXPECT_TRUE(ContentOf(local) == content);
    }
  }
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
