#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <iomanip>
#include <sstream>

#include "tests/codec/RandomMessage.h"

// Frames of the codec as an independent decoder sees them.

namespace Codec {
namespace {

constexpr char kFields[] = "tshark -T fields -E 'separator=|' -r ";

std::string output(std::string const& command) {
  FILE* const pipe = popen((command + " 2>/dev/null").c_str(), "r");
  if (!pipe) return {};
  std::string text;
  std::array<char, 4096> part;
  while (size_t const n = fread(part.data(), 1, part.size(), pipe)) text.append(part.data(), n);
  pclose(pipe);
  return text;
}

bool isInstalled() { return !output("command -v tshark && command -v text2pcap").empty(); }

/// Makes a capture of the frames; its name.
std::string captured(std::vector<Bytes> const& frames) {
  std::string const name = testing::TempDir() + "codec_tshark-" +
                           testing::UnitTest::GetInstance()->current_test_info()->name();
  std::ofstream text(name + ".txt");
  for (auto const& frame : frames) {
    text << std::hex << std::setfill('0');
    for (size_t i = 0; i < frame.size(); ++i) {
      if (i % 16 == 0) text << "\n" << std::setw(6) << i;
      text << " " << std::setw(2) << unsigned{frame[i]};
    }
    text << "\n";
  }
  text.close();
  output("text2pcap -q " + name + ".txt " + name + ".pcap");
  return name + ".pcap";
}

/// The fields of each frame, in one line each.
std::string fields(std::string const& capture, std::string const& names) {
  std::string command = kFields + capture;
  std::istringstream in(names);
  for (std::string name; in >> name;) command += " -e " + name;
  return output(command);
}

TEST(Tshark, FindsTheFieldsThatWereWritten) {
  if (!isInstalled()) GTEST_SKIP() << "tshark is not installed: run scripts/install-packages";
  CodecBench bench;
  bench.actorIs();
  bench.codec().dialectIs(bench.intf, {NameOnWire::octets, IcvIndicator::length16});
  Bytes const frame = bench.fullFrame();
  std::string const icv(Macsec::hexString(std::span(frame).last(16)).view());
  std::string const capture = captured({frame});
  EXPECT_EQ(fields(capture,
                   "eth.dst eth.src eapol.version eapol.type eapol.len mka.version_id "
                   "mka.ks_prio mka.key_server mka.macsec_desired mka.macsec_capability "
                   "mka.actor_mi mka.actor_mn mka.algo_agility"),
            "01:80:c2:00:00:03|02:00:00:00:00:01|3|5|208|1|10|1|1|2|a1a2a3a4a5a6a7a8a9aaabac|"
            "00000007|0x0080c201\n");
  EXPECT_EQ(
      fields(capture,
             "mka.peer_mi mka.peer_mn mka.latest_key_an mka.latest_key_tx "
             "mka.latest_key_rx mka.old_key_an mka.old_key_tx mka.old_key_rx "
             "mka.plain_tx mka.plain_rx mka.delay_protect"),
      "b1b2b3b4b5b6b7b8b9babbbc,c1c2c3c4c5c6c7c8c9cacbcc|00000003,01020304|3|0|1|2|1|1|0|1|1\n");
  EXPECT_EQ(
      fields(capture,
             "mka.latest_key_server_mi mka.latest_key_number "
             "mka.latest_lowest_acceptable_pn mka.old_key_server_mi "
             "mka.old_key_number mka.old_lowest_acceptable_pn"),
      "b1b2b3b4b5b6b7b8b9babbbc|00000002|00000066|a1a2a3a4a5a6a7a8a9aaabac|00000001|00000055\n");
  EXPECT_EQ(
      fields(capture,
             "mka.distributed_an mka.confidentiality_offset mka.key_number "
             "mka.aes_key_wrap_sak mka.icv"),
      std::string("3|1|00000002|116771c88648360e9aaff76dc6e18292b6496b89c29c10fe|") + icv + "\n");
}

TEST(Tshark, FindsNothingMalformedInAnyMessage) {
  if (!isInstalled()) GTEST_SKIP() << "tshark is not installed: run scripts/install-packages";
  CodecBench bench;
  bench.actorIs();
  Dice dice(3);
  std::vector<Bytes> frames;
  std::string expected;
  for (int i = 0; i < 300; ++i) {
    fillRandom(bench, dice);
    auto const form = dice.coin() ? IcvIndicator::length16 : IcvIndicator::leftOut;
    bench.codec().dialectIs(bench.intf, {NameOnWire::octets, form});
    frames.push_back(bench.sentFrame());
    auto const& basic = bench.txInfo().baseInfo();
    std::array<char, 9> number;
    snprintf(number.data(), number.size(), "%08x", basic.msgNum());
    expected += std::string(basic.msgId().view()) + "|" + number.data() + "||\n";
  }
  EXPECT_EQ(fields(captured(frames), "mka.actor_mi mka.actor_mn _ws.malformed _ws.expert"),
            expected);
}

// The decoder knows no ICV indicator of length 4: it looks for a further set where the ICV begins.
// All in front of the indicator's length is what it found right in the other dialects.
TEST(Tshark, SeesTheDefaultDialectDifferInTheLengthOfTheIcvIndicatorAlone) {
  CodecBench bench;
  bench.actorIs();
  Bytes const four = bench.fullFrame();
  bench.codec().dialectIs(bench.intf, {NameOnWire::octets, IcvIndicator::length16});
  Bytes const sixteen = bench.sentFrame();
  ASSERT_EQ(four.size(), sixteen.size());
  size_t const lengthAt = four.size() - 17;
  EXPECT_TRUE(
      std::equal(four.begin(), four.begin() + static_cast<ptrdiff_t>(lengthAt), sixteen.begin()));
  EXPECT_EQ(four[lengthAt], 4);
  EXPECT_EQ(sixteen[lengthAt], 16);
}

}  // namespace
}  // namespace Codec
