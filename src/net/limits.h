// Every cap on what strangers may cost this program, each with its reason. Sizes are bytes, times are seconds,
// "text" lengths are characters, unless the name says otherwise. Nothing here is tunable at run time: a cap that
// is reached is either an attack or a broken peer, never a preference.
#pragma once

#include <cstddef>
#include <cstdint>

namespace limits {

inline constexpr std::size_t kibibyte = 1024;
inline constexpr std::size_t mebibyte = 1024 * kibibyte;

// --- Fields -------------------------------------------------------------------------------------------------------

// The longest string and the largest count that the protocols allow: exactly this many is accepted, one more fails.
inline constexpr std::uint32_t textLengthOrCount = 0x20000;

// --- Frames: a length outside 0..limit closes the connection before a byte of the body is kept --------------------

// Buffers start at one piece and then double with the bytes that have arrived, so that a connection that has announced
// 64 MiB and sent nothing costs no more than this.
inline constexpr std::size_t receivePiece = 64 * kibibyte;
// A receive buffer that grew beyond this for a large frame is given back after it: a thousand connections keep buffers.
inline constexpr std::size_t keptReceiveBuffer = receivePiece;

// The largest init frame that can be valid: a byte, a name and a type of the longest allowed text with their
// lengths, and an int: 1 + 2 * (4 + 131,072) + 4.
inline constexpr std::size_t initFrame = 262'157;
static_assert(initFrame == 1 + 2 * (4 + std::size_t{textLengthOrCount}) + 4);

// Share lists and folder replies travel compressed: 64 MiB holds some ten million files.
inline constexpr std::size_t shareFrame = 64 * mebibyte;
// An answer to one search; honest ones are a few KiB.
inline constexpr std::size_t searchReplyFrame = 4 * mebibyte;
// All other peer messages hold at most two texts and a few numbers.
inline constexpr std::size_t peerFrame = 512 * kibibyte;
// Room lists of the largest servers take a few MiB.
inline constexpr std::size_t serverFrame = 64 * mebibyte;
// A search request with its user and text, forwarded through the tree.
inline constexpr std::size_t distributedFrame = 1 * mebibyte;

// --- Inflation: zlib packs zeros a thousand to one, so the inflated size has a cap of its own ---------------------

inline constexpr std::size_t inflatedShare = 256 * mebibyte;
inline constexpr std::size_t inflatedSearchReply = 32 * mebibyte;

// --- Sockets ------------------------------------------------------------------------------------------------------

// In all, together with the share of the descriptor limit below: accepting pauses at the smaller of the two and
// resumes below it, since an accept that fails for want of descriptors is retried without end by the event loop.
inline constexpr int sockets = 1000;
inline constexpr int socketsPercentOfDescriptors = 80;
// Left free for the store file, shared files and downloads.
inline constexpr int descriptorsKeptForFiles = 16;

// Callers that have not yet said who they are, and file sockets whose token has not come: strangers hold these for
// free, so they are few, few from one address, and short-lived.
inline constexpr int unknownSockets = 100;
inline constexpr int unknownSocketsOfAddress = 32;
inline constexpr int unknownSocketSeconds = 60;

// The server names the addresses: without a pace it could aim every client at one victim. The rest wait their turn.
inline constexpr int serverOrderedConnectionsPerSecond = 30;

// --- What waits to be sent ----------------------------------------------------------------------------------------

// A peer that asks and never reads: bytes queued to one socket, beyond one share list; a second share list is not
// queued while the first is still going out.
inline constexpr std::size_t queuedToSocket = 8 * mebibyte;
// A child of the distributed network that does not read is dropped: it is one of several, and its loss is cheap.
inline constexpr std::size_t queuedToChild = 1 * mebibyte;

// Messages that wait for a connection; the oldest go first, with a log line.
inline constexpr std::size_t waitingMessages = 1000;
inline constexpr std::size_t waitingMessageBytes = 64 * mebibyte;

// Share lists that have arrived and wait to be unpacked, which takes seconds for the largest: two of those. Beyond it
// lists are dropped, with a log line.
inline constexpr std::size_t packedLists = 128 * mebibyte;
// Share lists and folder replies that wait to be made, one at a time; requests beyond it get no answer.
inline constexpr std::size_t waitingListRequests = 1000;

// Upload entries of one user; beyond it the request is denied with a reason.
inline constexpr std::size_t uploadsOfUser = 5000;

// --- Searches -----------------------------------------------------------------------------------------------------

// Excluded words and parts of words that one search may hold against file names, over all files: a text may have tens
// of thousands of words, and a share a million files. Ten million take about a fifth of a second, and are enough for a
// dozen words against the largest shares; a search that needs more gets no answer.
inline constexpr std::size_t searchWordTests = 10'000'000;

// --- Screen -------------------------------------------------------------------------------------------------------

// Lines of a log page, plain text: each line costs layout time for as long as it is kept.
inline constexpr int logLines = 5000;

// Foreign text is cut for display only (laying out one line of 131,072 characters blocks the window for seconds);
// the store and the wire keep the bytes.
inline constexpr int labelText = 64;
inline constexpr int cellText = 512;
inline constexpr int chatLineText = 4096;

// Chat tabs that private messages open by themselves: anyone can write under many names, and each tab takes room in the
// bar and memory. Beyond it messages wait behind one alert, the oldest going first.
inline constexpr std::size_t chatTabs = 50;
inline constexpr std::size_t waitingChatMessages = 1000;

// --- Files --------------------------------------------------------------------------------------------------------

// Bytes of one component of a path made from foreign text: what the usual Linux file systems take.
inline constexpr std::size_t pathComponent = 255;

// --- Routers ------------------------------------------------------------------------------------------------------

// A search for routers is answered by whoever hears it. Four kinds of answers are searched for, two seconds each; the
// time is for those that answer without end.
inline constexpr int routerSearchAnswers = 64;
inline constexpr int routerSearchSeconds = 10;
// What a router says of itself, or to one question; honest ones take a few KiB.
inline constexpr std::size_t routerAnswer = 1 * mebibyte;
// For one question, an answer that trickles included. Nobody waits for it.
inline constexpr unsigned routerQuestionSeconds = 30;

// --- Ports --------------------------------------------------------------------------------------------------------

// A port is a 32-bit number on the wire and text in settings.
inline constexpr long long lowestPort = 1;
inline constexpr long long highestPort = 65535;

[[nodiscard]] constexpr bool IsConnectablePort(long long i_port) {
    return i_port >= lowestPort && i_port <= highestPort;
}

} // namespace limits
