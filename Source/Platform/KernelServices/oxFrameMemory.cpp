#include "oxFrameMemory_p.h"

namespace {

constexpr qint64 wholePages(qint64 bytes)
{
    return (bytes + oxFrameMemory::pageSize - 1) / oxFrameMemory::pageSize * oxFrameMemory::pageSize;
}

} // namespace

int oxFrameMemory::sizeFor(const QSize &largest)
{
    return static_cast<int>(pageSize + 2 * wholePages(frameSize(largest)));
}

qint64 oxFrameMemory::frameSize(const QSize &size)
{
    if (size.isEmpty() || size.width() > 0x7fff || size.height() > 0x7fff)
        return -1;
    return qint64(4) * size.width() * size.height();
}
