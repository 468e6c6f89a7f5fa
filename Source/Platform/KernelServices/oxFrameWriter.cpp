#include "oxFrameWriter.h"

#include "oxFrameMemory_p.h"

using namespace oxFrameMemory;

namespace {

Header *header(QSharedMemory *memory)
{
    return static_cast<Header *>(memory->data());
}

// Native names: a plain one comes with a semaphore, which a process may hold when it is stopped.
std::unique_ptr<QSharedMemory> memoryNamed(const QString &name)
{
    auto memory = std::make_unique<QSharedMemory>();
    memory->setNativeKey(name);
    return memory;
}

} // namespace

oxFrameWriter::oxFrameWriter() = default;

oxFrameWriter::~oxFrameWriter() = default;

bool oxFrameWriter::open(const QString &name, const QSize &largest)
{
    if (frameSize(largest) < 0 || 2 * frameSize(largest) > 0x7f000000) {
        m_error = QStringLiteral("no memory holds frames of %1x%2").arg(largest.width()).arg(largest.height());
        return false;
    }
    m_memory = createOrTakeOver(name, sizeFor(largest));
    if (!m_memory)
        return false;
    m_error.clear();

    Header *memory = header(m_memory.get());
    if (memory->magic != magic || memory->version != version) {
        memory->newest = 0;
        memory->version = version;
        memory->magic = magic;
    }
    m_frame = memory->newest;
    return true;
}

// One object for each attempt: after a failed one, QSharedMemory does not get to the next.
std::unique_ptr<QSharedMemory> oxFrameWriter::createOrTakeOver(const QString &name, int size)
{
    {
        std::unique_ptr<QSharedMemory> old = memoryNamed(name);
        if (old->attach() && old->size() == size)
            return old;
    } // nobody else's? Then the one of another size goes with this object.
    std::unique_ptr<QSharedMemory> memory = memoryNamed(name);
    if (memory->create(size))
        return memory;
    m_error = memory->errorString();
    return nullptr;
}

QString oxFrameWriter::errorString() const
{
    return m_error;
}

QString oxFrameWriter::name() const
{
    return m_memory ? m_memory->nativeKey() : QString();
}

bool oxFrameWriter::hasRoomFor(const QSize &size) const
{
    const qint64 bytes = frameSize(size);
    return m_memory && bytes > 0 && bytes <= slotSize(*m_memory);
}

uchar *oxFrameWriter::begin(const QSize &size)
{
    if (!hasRoomFor(size))
        return nullptr;
    const quint64 next = m_frame + 1;
    Slot &slot = header(m_memory.get())->slots[slotOf(next)];
    slot.sequence.store(2 * next - 1, std::memory_order_relaxed);
    std::atomic_thread_fence(std::memory_order_release); // before the first pixel
    slot.width.store(size.width(), std::memory_order_relaxed);
    slot.height.store(size.height(), std::memory_order_relaxed);
    return static_cast<uchar *>(m_memory->data()) + pageSize + slotOf(next) * static_cast<size_t>(slotSize(*m_memory));
}

quint64 oxFrameWriter::finish()
{
    const quint64 frame = ++m_frame;
    Header *memory = header(m_memory.get());
    memory->slots[slotOf(frame)].sequence.store(2 * frame, std::memory_order_release);
    memory->newest.store(frame, std::memory_order_release);
    return frame;
}
