#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "platform/CounterMemory.h"
#include "platform/CounterRecordWriter.h"
#include "platform/CounterTable.h"
#include "platform/MessageCounterData.h"
#include "platform/MessageCounterReader.h"
#include "runtime/PtrInterface.h"
#include "runtime/String8.h"

namespace Macsec::Brine {

struct MessageCountersOptions {
  /// Whether damage costs what is damaged. Otherwise it costs the process: see
  /// `MessageCounters::corruptionDetected`.
  bool recovers = true;
  /// Whether this process counts, as one does at a time. One that doesn't only reads and clears.
  bool counts = true;
  /// The most records, that of the empty interface id included.
  uint32_t capacity = 4096;
};

/// The message counters of all interfaces, in memory that other processes can read at any time
/// (`MessageCounterReader`). Layout: platform/CounterLayout.h.
///
/// A table that is there already goes on from where it stands. One of another form, and each
/// damaged record of a table that recovers, is kept as a corruption file and starts anew.
class MessageCounters : public Vesk::PtrInterface {
 public:
  using Direction = MessageCounterDirection;
  using Type = MessageCounterType;
  using SubType = MessageCounterFailureSubType;

  MessageCounters(Vesk::Name const& name, std::shared_ptr<CounterMemory> memory,
                  MessageCountersOptions options = {});
  /// A table in the memory of this process.
  static Vesk::Ptr<MessageCounters> inProcess(Vesk::Name const& name);

  Vesk::Name const& name() const { return name_; }

  /// Makes a record for an interface, so that counting on it allocates nothing. An interface whose
  /// name is too long, or that finds the table full, counts for the empty interface id.
  void intfIs(Lumo::IntfId intfId);
  /// Asks the processor for what the next success of an interface will touch.
  void expect(Lumo::IntfId intfId) const;
  /// Adds one. A success has the sub type `none`. An interface without a record counts for the
  /// empty interface id.
  void inc(Lumo::IntfId intfId, Direction direction, Type type, SubType subType);

  /// What has been counted in all; 0 for an interface without a record. Throws as
  /// `messageCounterData` does.
  uint64_t value(Lumo::IntfId intfId, Direction direction, Type type, SubType subType);
  /// What has been counted since the snapshot.
  uint64_t valueSinceSnapshot(Lumo::IntfId intfId, Direction direction, Type type, SubType subType);

  /// The record of an interface as it is now; the empty record for an interface without one. Throws
  /// `Pollux::CorruptionDetectedException` if anything of the record or the header is damaged, and
  /// `RecordBusyException` if another process leaves no time to read it.
  MessageCounterData messageCounterData(Lumo::IntfId intfId);
  /// The counters when they were last cleared; the empty record for an interface without a record.
  MessageCounterData snapshot(Lumo::IntfId intfId);
  MessageCounterData const& emptyRecord() const;
  /// What a reader finds of an interface, without a look at the records of others; none for an
  /// interface without a record. Throws as `messageCounterData` does.
  std::optional<InterfaceCounters> counters(Lumo::IntfId intfId);
  /// Stores this as the state since which a reader counts. The empty record, and one of an
  /// interface that has none, stores nothing. Throws as `messageCounterData` does.
  void msgCounterSnapshotIs(MessageCounterData const& record);

  /// A look at the whole table. Valid until the next call that isn't a read.
  MessageCounterReader reader();

  /// What happens when a read has found the table corrupt. A table that doesn't recover throws
  /// `Pollux::CorruptionDetectedException`. One that does lets go of the memory and writes a
  /// corruption file; the next use takes up the memory again, and what is damaged starts anew.
  void corruptionDetected(std::string_view message);

 private:
  // One per record, by its index.
  struct Entry {
    Lumo::IntfId intfId;
    CounterTail tail;
    bool isUsed = false;
    bool isFrozen = false;  // damaged, in a table that doesn't recover: nothing is counted here
  };
  using Writer = CounterRecordWriter<>;

  bool isAttached();
  void letGoOfLost();
  void takeUp();
  void takeUpHeader();
  void keepDamage();
  void takeUpRecord(size_t index);
  void repair(size_t index, std::string_view damage);
  void claim(Lumo::IntfId intfId);
  size_t freeRecord();
  void entryIs(size_t index, Lumo::IntfId intfId, CounterTail tail);
  void entryDel(size_t index);
  void follow();
  void corruptionFileIs(std::string_view text);

  size_t const* place(Lumo::IntfId intfId) const;
  size_t const* checkedPlace(Lumo::IntfId intfId);
  std::span<uint64_t> recordWords(size_t index) const;
  CounterTable table() const { return CounterTable(words_); }

  Vesk::Name const name_;
  std::shared_ptr<CounterMemory> const memory_;
  MessageCountersOptions const options_;
  std::span<uint64_t> words_;  // none while detached
  std::vector<Entry> entries_;
  std::vector<size_t> places_;  // by the index of the interface: its record, or kNowhere
  std::vector<size_t> free_;    // records below the used ones that are in no use
  bool hasCorruptionFile_ = false;
};

}  // namespace Macsec::Brine
