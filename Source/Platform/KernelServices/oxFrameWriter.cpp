#include "oxFrameWriter.h"

#include <QCoreApplication>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "oxFrameMemory_p.h"

using namespace oxFrameMemory;

namespace {

Header *header(uchar *memory)
{
    return reinterpret_cast<Header *>(memory);
}

} // namespace

oxFrameWriter::oxFrameWriter() = default;

oxFrameWriter::~oxFrameWriter() = default;

bool oxFrameWriter::open(const QSize &largest)
{
    m_file.unmap(m_memory); // close() does not
    m_file.close();
    m_memory = nullptr;
    m_frame = 0;
    m_error = create(largest);
    if (!m_error.isEmpty())
        return false;
    header(m_memory)->version = version;
    header(m_memory)->magic = magic;
    return true;
}

// Returns why that was not possible; empty when it was.
QString oxFrameWriter::create(const QSize &largest)
{
    if (frameSize(largest) < 0 || 2 * frameSize(largest) > 0x7f000000)
        return QStringLiteral("no memory holds frames of %1x%2").arg(largest.width()).arg(largest.height());
    const int size = sizeFor(largest);
    const int descriptor = memfd_create("oxFrames", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    if (descriptor < 0)
        return qt_error_string();
    const bool isReady = fchmod(descriptor, S_IRUSR | S_IWUSR) == 0 && ftruncate(descriptor, size) == 0
        && fcntl(descriptor, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW) == 0;
    QString error = isReady ? QString() : qt_error_string();
    m_file.open(descriptor, QIODevice::ReadWrite, QFileDevice::AutoCloseHandle); // maps up to the size of now
    if (!isReady)
        return error;
    m_memory = m_file.map(0, size);
    m_slotSize = slotSize(size);
    return m_memory ? QString() : m_file.errorString();
}

QString oxFrameWriter::errorString() const
{
    return m_error;
}

QString oxFrameWriter::name() const
{
    if (!m_memory)
        return {};
    return QStringLiteral("/proc/%1/fd/%2").arg(QCoreApplication::applicationPid()).arg(m_file.handle());
}

bool oxFrameWriter::hasRoomFor(const QSize &size) const
{
    const qint64 bytes = frameSize(size);
    return m_memory && bytes > 0 && bytes <= m_slotSize;
}

uchar *oxFrameWriter::begin(const QSize &size)
{
    if (!hasRoomFor(size))
        return nullptr;
    const quint64 next = m_frame + 1;
    Slot &slot = header(m_memory)->slots[slotOf(next)];
    slot.sequence.store(2 * next - 1, std::memory_order_relaxed);
    std::atomic_thread_fence(std::memory_order_release); // before the first pixel
    slot.width.store(size.width(), std::memory_order_relaxed);
    slot.height.store(size.height(), std::memory_order_relaxed);
    return m_memory + pageSize + static_cast<qint64>(slotOf(next)) * m_slotSize;
}

quint64 oxFrameWriter::finish()
{
    const quint64 frame = ++m_frame;
    header(m_memory)->slots[slotOf(frame)].sequence.store(2 * frame, std::memory_order_release);
    header(m_memory)->newest.store(frame, std::memory_order_release);
    return frame;
}
