#include "host/text/CounterText.h"

#include <gtest/gtest.h>

#include "platform/Corruption.h"
#include "tests/platform/CounterBench.h"

namespace Macsecd {
namespace {

using Macsec::Brine::CounterBench;
using SubType = CounterBench::SubType;

TEST(CounterText, ShowsWhatIsNotZeroSinceTheClearingAndInAll) {
  CounterBench bench;
  bench.counters->intfIs(Lumo::IntfId("Ethernet10"));
  bench.fill();
  for (int i = 0; i < 12345; ++i) bench.count(bench.two);
  EXPECT_EQ(counterText(bench.reader()),
            "Interface   Frames                       Since clear  Total\n"
            "Ethernet1   tx success                             3      8\n"
            "            rx failure icvValidationErr            0      1\n"
            "            rx failure distSakSetErr               1      1\n"
            "Ethernet10  none\n"
            "Ethernet2   tx success                         12348  12353\n"
            "            rx failure icvValidationErr            0      1\n"
            "            rx failure distSakSetErr               1      1\n");
}

TEST(CounterText, ShowsFramesOfInterfacesWithoutARecordBehindAllOthers) {
  CounterBench bench;
  bench.counters->intfIs(bench.one);
  bench.fail(bench.two, SubType::unrecognizedCkn);
  EXPECT_EQ(counterText(bench.reader()),
            "Interface  Frames                      Since clear  Total\n"
            "Ethernet1  none\n"
            "(others)   rx failure unrecognizedCkn            1      1\n");
}

TEST(CounterText, ShowsADamagedRecordAndAllThatIsSound) {
  CounterBench bench;
  bench.fill();
  bench.record(1)[Macsec::Brine::CounterLayout::kCounterAreaAt * sizeof(uint64_t) + 20] ^= 1;
  EXPECT_EQ(counterText(bench.reader()),
            "Interface   Frames                       Since clear  Total\n"
            "Ethernet2   tx success                             3      8\n"
            "            rx failure icvValidationErr            0      1\n"
            "            rx failure distSakSetErr               1      1\n"
            "(record 1)  unreadable: record 1 'Ethernet1': counters, slot 0: the words don't fit "
            "their checksum\n");
}

TEST(CounterText, OfADamagedHeaderSaysWhatIsWrong) {
  CounterBench bench;
  bench.header()[0] ^= 1;
  EXPECT_THROW(counterText(bench.reader()), Pollux::CorruptionDetectedException);
}

}  // namespace
}  // namespace Macsecd
