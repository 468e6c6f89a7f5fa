#pragma once

#include <QSize>

#include <array>
#include <atomic>

/// What is in the shared memory between oxFrameWriter and oxFrameReader: a page with the header,
/// then two slots for frames, which the frames take in turn.
///
/// The memory is a file without a place in a folder: the system frees it with the last process that
/// has it open, so that a killed one leaves nothing behind, and it is sealed at its size, as whoever
/// reads beyond the end of a file that was cut off is killed.
///
/// Nobody locks anything, as a process that is killed or stopped would keep the lock. A slot's
/// sequence is odd while its frame is written: a reader that finds it changed after it copied the
/// frame drops the copy.
namespace oxFrameMemory {

constexpr quint32 magic = 0x4d46786f; // "oxFM"
constexpr quint32 version = 1;
constexpr qint64 pageSize = 4096;

struct Slot
{
    std::atomic<quint64> sequence; // 2n when frame n is in it, 2n - 1 while that is written
    std::atomic<qint32> width;
    std::atomic<qint32> height;
};

struct Header
{
    std::atomic<quint32> magic;
    std::atomic<quint32> version;
    std::atomic<quint64> newest; // number of the newest complete frame; 0 before the first
    std::array<Slot, 2> slots;
};

static_assert(sizeof(Header) <= pageSize);
static_assert(std::atomic<quint64>::is_always_lock_free && std::atomic<quint32>::is_always_lock_free);

/// The bytes that hold two frames of that size.
int sizeFor(const QSize &largest);

/// Room of one slot, by the size that the system gives for the memory: what the header says is not
/// to be trusted. Negative for a memory without slots.
constexpr qint64 slotSize(qint64 memorySize)
{
    return (memorySize - pageSize) / 2 / pageSize * pageSize;
}

constexpr size_t slotOf(quint64 frame)
{
    return frame % 2;
}

/// The bytes of a frame; negative for a size that no frame has.
qint64 frameSize(const QSize &size);

} // namespace oxFrameMemory
