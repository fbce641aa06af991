#include "host/client/Pcap.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace Macsecd {
namespace {

using Bytes = std::vector<uint8_t>;

std::string path(std::string const& name) { return testing::TempDir() + "/" + name; }

void write(std::string const& file, std::string const& octets) {
  std::ofstream(file, std::ios::binary) << octets;
}

TEST(Pcap, ReadsWhatItWrote) {
  for (auto times : {PcapTimes::microseconds, PcapTimes::nanoseconds}) {
    std::string const file = path("written.pcap");
    PcapWriter writer(file, times);
    writer.add(1.001, Bytes{1, 2, 3});
    writer.add(7200.5, Bytes(1514, 9));
    writer.flush();
    EXPECT_TRUE(writer.good());
    Pcap const pcap = readPcap(file);
    EXPECT_EQ(pcap.fault, "");
    ASSERT_EQ(pcap.frames.size(), 2u);
    EXPECT_DOUBLE_EQ(pcap.frames[0].time, 1.001);
    EXPECT_EQ(pcap.frames[0].octets, (Bytes{1, 2, 3}));
    EXPECT_DOUBLE_EQ(pcap.frames[1].time, 7200.5);
    EXPECT_EQ(pcap.frames[1].length, 1514u);
  }
}

TEST(Pcap, RoundsATimeUpIntoTheNextSecond) {
  std::string const file = path("round.pcap");
  PcapWriter writer(file, PcapTimes::microseconds);
  writer.add(1.9999999, Bytes{1});
  writer.flush();
  EXPECT_DOUBLE_EQ(readPcap(file).frames.at(0).time, 2.0);
}

TEST(Pcap, ReadsTheOtherByteOrder) {
  std::string const file = path("swapped.pcap");
  write(file, std::string("\xa1\xb2\xc3\xd4\0\2\0\4\0\0\0\0\0\0\0\0\0\4\0\0\0\0\0\1"
                          "\0\0\0\5\0\0\0\1\0\0\0\2\0\0\0\3xy",
                          24 + 18));
  Pcap const pcap = readPcap(file);
  ASSERT_EQ(pcap.frames.size(), 1u);
  EXPECT_DOUBLE_EQ(pcap.frames[0].time, 5.000001);
  EXPECT_EQ(pcap.frames[0].octets, (Bytes{'x', 'y'}));
  EXPECT_EQ(pcap.frames[0].length, 3u);
}

TEST(Pcap, NamesTheOctetThatIsWrong) {
  std::string const file = path("wrong.pcap");
  EXPECT_NE(readPcap(path("missing.pcap")).fault, "");
  write(file, "short");
  EXPECT_EQ(readPcap(file).fault, "octet 0 ends within the head of a pcap file");
  write(file, std::string(24, 'x'));
  EXPECT_EQ(readPcap(file).fault,
            "octet 0 is no classic pcap file; convert it with: editcap -F pcap");
  {
    PcapWriter writer(file);
    writer.add(0, Bytes{1, 2, 3});
  }
  std::ifstream in(file, std::ios::binary);
  std::string const whole{std::istreambuf_iterator<char>(in), {}};
  write(file, whole.substr(0, whole.size() - 1));
  EXPECT_EQ(readPcap(file).fault, "octet 24 begins a frame that is cut off");
  write(file, whole + "more");
  EXPECT_EQ(readPcap(file).fault, "octet 43 ends within the head of a frame");
  EXPECT_EQ(readPcap(file).frames.size(), 1u);
  std::string radio = whole;
  radio[20] = 105;
  write(file, radio);
  EXPECT_EQ(readPcap(file).fault, "octet 20 says link type 105; only Ethernet, 1, is understood");
}

}  // namespace
}  // namespace Macsecd
