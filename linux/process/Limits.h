#pragma once

#include <cstddef>
#include <cstdint>

/// The limits and periods of this room, in one place. What only one class can make sense of stands
/// with that class: the parts of a frame, the layout of a file, the bounds of a histogram.
namespace Linux::Limits {

// clang-format off
//                              name                  value      unit, and why so much
// The kernel
inline constexpr double         kFirstRetry         = 1;         // s; soon, as most refusals pass
inline constexpr double         kLastRetry          = 60;        // s; an operator who helps waits no longer
inline constexpr double         kRaisePeriod        = 0.25;      // s; the peer tells twice a second
inline constexpr double         kFilterCheck        = 2;         // s; so long may clear frames pass a removed filter
inline constexpr double         kFilterLook         = 60;        // s; should the kernel not tell of a change
inline constexpr int            kFilterNews         = 256;       // messages a check; the rest tells at the next one
inline constexpr double         kLinkRetry          = 1;         // s; without links there is no port
inline constexpr int            kLinkReads          = 32;        // messages a turn; frames mustn't wait for a storm
inline constexpr uint64_t       kLinksPerTurn       = 32;        // told; making ports takes the kernel a while
inline constexpr int            kLinkRoom           = 1 << 20;   // octets; links that change at the same time
inline constexpr size_t         kLinkMessage        = 64 << 10;  // octets; no part of an answer is longer
inline constexpr size_t         kNamedUses          = 5;         // addresses or routes told; the rest is counted

// Frames
inline constexpr size_t         kFramesPerTurn      = 32;        // a flood on one port mustn't hold the others up
inline constexpr size_t         kSocketsPerTurn     = 32;        // a flood on all ports mustn't hold timers up
inline constexpr int            kFrameRoom          = 2 << 20;   // octets; some 2600 short frames of a burst

// Who connects
inline constexpr int            kAcceptsPerTurn     = 16;        // connections; the others are served in between
inline constexpr int            kBacklog            = 16;        // connections that wait to be taken
inline constexpr size_t         kControlClients     = 32;        // connections; some who watch, some who ask
inline constexpr size_t         kControlUnread      = 16 << 20;  // octets; the status of some thousands of ports
inline constexpr size_t         kPushed             = 1 << 20;   // octets of events that nobody reads yet
inline constexpr size_t         kEapClients         = 16;        // connections; a program for each of some ports
inline constexpr size_t         kMetricsClients     = 8;         // connections; each asks once
inline constexpr size_t         kMetricsRequest     = 8192;      // octets; who sends more asks for no metrics
inline constexpr size_t         kLine               = 4096;      // octets; a line with a key is shorter

// Who asks
inline constexpr int            kAnswerWait         = 10;        // s; a daemon that is busy longer hangs
inline constexpr int            kCountdown          = 1000;      // ms; a trial is shown second by second

// What is kept
inline constexpr size_t         kTraceFile          = 4 << 20;   // octets; a ring, so it never grows
inline constexpr size_t         kTraceLine          = 4096;      // octets of a statement
inline constexpr size_t         kFirstMap           = 16 << 20;  // octets of the store; it grows
inline constexpr unsigned       kStoreTrial         = 10;        // s; a damaged store may never end
inline constexpr unsigned       kMostLosses         = 3;         // of the shared counters; more often is no mishap

// The process
inline constexpr double         kFrozen             = 1;         // s; MKPDUs of others wait behind it
// clang-format on

}  // namespace Linux::Limits
