#include "linux/keep/LmdbStore.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "linux/keep/LmdbTransaction.h"

namespace Linux {
namespace {

using Macsecd::StateChange;
using Macsecd::StateValues;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct Lmdb : testing::Test {
  Lmdb() {
    std::string pattern = testing::TempDir() + "lmdb-XXXXXX";
    folder = mkdtemp(pattern.data());
    path = folder + "/state";
  }
  ~Lmdb() override { std::filesystem::remove_all(folder); }
  static mode_t modeOf(std::string const& file) {
    struct stat status = {};
    stat(file.c_str(), &status);
    return status.st_mode & 0777;
  }
  // As another program could have left it.
  void rawPut(std::string const& key, std::string const& value) const {
    MDB_env* env = nullptr;
    mdb_env_create(&env);
    ASSERT_EQ(mdb_env_open(env, path.c_str(), MDB_NOSUBDIR, 0600), 0);
    {
      LmdbTransaction transaction(env, 0);
      transaction.put(transaction.open(), key, value);
      ASSERT_EQ(transaction.commit(), 0);
    }
    mdb_env_close(env);
  }
  std::string folder;
  std::string path;
};

TEST_F(Lmdb, IsEmptyAtFirstAndForItsOwnerAlone) {
  LmdbStore store(path);
  EXPECT_THAT(store.readAll(), IsEmpty());
  EXPECT_THAT(store.notices(), IsEmpty());
  EXPECT_EQ(modeOf(path), 0600u);
  EXPECT_EQ(modeOf(path + "-lock"), 0600u);
}

TEST_F(Lmdb, HoldsWhatWasCommittedWhenOpenedAgain) {
  std::string const octets("\0\xff'", 3);
  EXPECT_TRUE(LmdbStore(path).commit({{}, {{"a/b", "1"}, {"c", octets}}}));
  EXPECT_EQ(LmdbStore(path).readAll(), (StateValues{{"a/b", "1"}, {"c", octets}}));
}

TEST_F(Lmdb, DoesWithAChangeWhatItIsDefinedToDo) {
  StateValues expected;
  LmdbStore store(path);
  for (StateChange const& change :
       {StateChange{{}, {{"a", "+"}, {"a/x", "1"}, {"a/y/z", "2"}, {"a!", "3"}, {"ab", "4"}}},
        StateChange{{}, {{"a/x", std::nullopt}, {"nobody", std::nullopt}, {"ab", "5"}}},
        StateChange{{"a", "nothing"}, {{"a/x", "6"}}}, StateChange{{"ab"}, {{"ab", "7"}}}}) {
    EXPECT_TRUE(store.commit(change));
    apply(change, expected);
    EXPECT_EQ(store.readAll(), expected);
  }
  EXPECT_EQ(expected.size(), 3u);
}

TEST_F(Lmdb, GrowsWhenItIsFull) {
  LmdbStore store(path, size_t{64} << 10);
  StateChange change;
  for (int i = 0; i < 2000; ++i) change.values["key" + std::to_string(i)] = std::string(300, 'x');
  EXPECT_TRUE(store.commit(change));
  EXPECT_EQ(store.readAll().size(), 2000u);
  EXPECT_EQ(LmdbStore(path, size_t{64} << 10).readAll().size(), 2000u);
}

TEST_F(Lmdb, TellsWhatItCanNotTakeAndTakesNothingOfIt) {
  LmdbStore store(path);
  auto const taken = store.commit({{}, {{"a", "1"}, {std::string(600, 'k'), "2"}}});
  EXPECT_THAT(taken.fault().what, HasSubstr(path));
  EXPECT_THAT(taken.fault().remedy, HasSubstr("file system has room"));
  EXPECT_THAT(store.readAll(), IsEmpty());
}

TEST_F(Lmdb, OfAnotherLayoutIsEmptiedAndTold) {
  EXPECT_TRUE(LmdbStore(path).commit({{}, {{"a", "1"}}}));
  rawPut("%layout", "0");
  LmdbStore store(path);
  EXPECT_THAT(store.readAll(), IsEmpty());
  EXPECT_THAT(store.notices(), ElementsAre(HasSubstr("had layout '0' instead of '1'")));
  EXPECT_THAT(LmdbStore(path).notices(), IsEmpty());
}

TEST_F(Lmdb, RefusesWhatIsNoFileAndAFolderThatIsNotThere) {
  std::filesystem::create_directory(path);
  EXPECT_THROW(LmdbStore{path}, std::runtime_error);
  EXPECT_THROW(LmdbStore{folder + "/none/state"}, std::runtime_error);
}

TEST_F(Lmdb, FileThatIsNoneIsSetAside) {
  std::ofstream(path) << std::string(20000, 'x');
  LmdbStore store(path);
  EXPECT_THAT(store.readAll(), IsEmpty());
  EXPECT_THAT(store.notices(), ElementsAre(HasSubstr(path + ".damaged")));
  EXPECT_TRUE(std::filesystem::exists(path + ".damaged"));
  EXPECT_TRUE(store.commit({{}, {{"a", "1"}}}));
}

// Wherever it is cut or a block of it is overwritten: the store opens, reads and writes.
TEST_F(Lmdb, FileThatIsDamagedAnywhereCrashesNobody) {
  StateChange change;
  for (int i = 0; i < 300; ++i) change.values["key" + std::to_string(i)] = std::string(200, 'x');
  {
    LmdbStore store(path);
    EXPECT_TRUE(store.commit(change));
    EXPECT_TRUE(store.commit({{"key7"}, {{"a", "1"}}}));
  }
  std::string const good = folder + "/good";
  std::filesystem::copy_file(path, good);
  size_t const size = std::filesystem::file_size(good);
  size_t aside = 0;
  for (size_t at = 0; at < size; at += 2048) {
    for (bool const cut : {true, false}) {
      std::filesystem::copy_file(good, path, std::filesystem::copy_options::overwrite_existing);
      if (cut) std::filesystem::resize_file(path, at);
      if (!cut) {
        std::fstream(path, std::ios::in | std::ios::out).seekp(static_cast<std::streamoff>(at))
            << std::string(64, '\x7f');
      }
      LmdbStore store(path);
      aside += !store.notices().empty();
      store.readAll();
      EXPECT_TRUE(store.commit({{"a"}, {{"b", "2"}}})) << at;
    }
  }
  EXPECT_GT(aside, size / 4096 / 2);
}

// Commits one state after the other, each with one number throughout, and tells each when it is
// committed.
[[noreturn]] void commitForEver(std::string const& path, int told) {
  LmdbStore store(path);
  for (uint32_t n = 1;; ++n) {
    StateChange change{{"gone" + std::to_string(n - 1)}, {{"gone" + std::to_string(n), "+"}}};
    for (int i = 0; i < 50; ++i) change.values["a/" + std::to_string(i)] = std::to_string(n);
    if (!store.commit(change) || write(told, &n, sizeof n) != sizeof n) _exit(1);
  }
}

TEST_F(Lmdb, HoldsOneOfTheCommittedStatesAfterAKillInMidCommit) {
  for (int kills = 0; kills < 25; ++kills) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    pid_t const child = fork();
    if (child == 0) commitForEver(path, ends[1]);
    close(ends[1]);
    uint32_t last = 0, n = 0;
    for (int i = 0; i <= kills * 3; ++i) ASSERT_EQ(read(ends[0], &last, sizeof last), 4);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    while (read(ends[0], &n, sizeof n) == sizeof n) last = n;
    close(ends[0]);

    LmdbStore store(path);
    EXPECT_THAT(store.notices(), IsEmpty());
    auto const values = store.readAll();
    ASSERT_EQ(values.size(), 51u);
    std::string const state = values.at("a/0");
    EXPECT_GE(std::stoul(state), last);
    EXPECT_LE(std::stoul(state), last + 1);
    for (int i = 0; i < 50; ++i) EXPECT_EQ(values.at("a/" + std::to_string(i)), state);
    EXPECT_TRUE(values.count("gone" + state));
    EXPECT_TRUE(store.commit({{"gone" + state}, {}}));
  }
}

}  // namespace
}  // namespace Linux
