#include "ObjectDescription.h"

#include <QDataStream>
#include <QIODevice>
#include <QMetaObject>
#include <QSet>
#include <QVariant>
#include <QVector>

#include <algorithm>

#include "oxStreamedTypes.h"

namespace {

constexpr int maximumMemberCount = 10000;
constexpr int maximumNameSize = 1000; // Qt follows the brackets of templates by recursion

class DescriptionReader
{
public:
    DescriptionReader(QDataStream &packet, QByteArray *unknownHere, QByteArray *unknownThere)
        : m_packet(packet)
        , m_unknownHere(unknownHere)
        , m_unknownThere(unknownThere)
    {}

    // In the order of the packet.
    bool read()
    {
        return readInterface() && readGadgets() && readSignals() && readMethods() && readProperties() && readValues();
    }

private:
    template<class T>
    T next()
    {
        T value{};
        m_packet >> value;
        return value;
    }

    /// As many items as their count says; nothing makes room for them before they are there.
    template<class ReadItem>
    bool readList(const ReadItem &readItem)
    {
        for (auto count = next<quint32>(); count > 0; --count) {
            if (!readItem() || m_packet.status() != QDataStream::Ok)
                return false;
        }
        return m_packet.status() == QDataStream::Ok;
    }

    bool isKnown(const QByteArray &typeName)
    {
        if (QMetaType::type(typeName) != QMetaType::UnknownType)
            return true;
        const bool isPrintable =
            std::all_of(typeName.cbegin(), typeName.cend(), [](char c) { return c >= ' ' && c <= '~'; });
        *m_unknownHere = isPrintable ? typeName : QByteArray();
        return false;
    }

    bool readName() { return next<QByteArray>().size() <= maximumNameSize; }

    bool readSignature()
    {
        const auto signature = next<QByteArray>();
        return ++m_memberCount <= maximumMemberCount && signature.size() <= maximumNameSize && signature.contains('(')
            && signature.endsWith(')') && signature == QMetaObject::normalizedSignature(signature.constData());
    }

    bool readParameterNames()
    {
        return readList([this] { return readName(); });
    }

    bool readInterface()
    {
        const auto name = next<QString>();
        const auto ownEnumerations = next<quint32>();
        const auto otherEnumerations = next<quint32>();
        return name.size() <= maximumNameSize && ownEnumerations == 0 && otherEnumerations == 0;
    }

    // Types with a meta-object, of arguments and results. Their description counts where they are
    // not registered.
    bool readGadgets()
    {
        return readList([this] {
            const auto name = next<QByteArray>();
            return name.size() <= maximumNameSize && isKnown(name)
                && readList([this] { return readName() && readName(); }) // property and type
                && readList([this] { return readEnumeration(); });
        });
    }

    bool readEnumeration()
    {
        const bool isNamed = readName();
        next<bool>();    // whether it is a flag
        next<bool>();    // or a class
        next<quint32>(); // its size
        return isNamed && readList([this] {
                   const bool hasKey = readName();
                   next<qint32>();
                   return hasKey;
               });
    }

    bool readSignals()
    {
        return readList([this] { return readSignature() && readParameterNames(); });
    }

    bool readMethods()
    {
        return readList([this] { return readSignature() && readName() && readParameterNames(); });
    }

    bool readProperties()
    {
        return readList([this] {
            const bool isNamed = readName();
            const auto typeName = next<QByteArray>();
            const bool isNotifierNamed = readName();
            if (!isNamed || !isNotifierNamed || typeName.size() > maximumNameSize
                || ++m_memberCount > maximumMemberCount)
                return false;
            m_propertyTypes.append(QMetaType::type(typeName));
            return isKnown(typeName);
        });
    }

    bool readValues()
    {
        const qint64 start = m_packet.device()->pos();
        if (readValues(QByteArray()))
            return true;
        const QSet<int> types(m_propertyTypes.cbegin(), m_propertyTypes.cend());
        for (const int type : types) {
            if (type < QMetaType::User)
                continue;
            const QByteArray name = QMetaType::typeName(type);
            m_packet.resetStatus();
            m_packet.device()->seek(start);
            if (!oxStreamedTypes::isStreamable(type))
                *m_unknownHere = name;
            else if (readValues(name))
                *m_unknownThere = name;
        }
        return false;
    }

    // Those of the type valueless are without a value, as from a process that has not registered it.
    bool readValues(const QByteArray &valueless)
    {
        const int count = int(next<quint32>());
        if (count != m_propertyTypes.size())
            return false;
        for (const int type : qAsConst(m_propertyTypes)) {
            const QVariant value =
                valueless.isEmpty() ? next<QVariant>() : oxStreamedTypes::readVariant(m_packet, valueless);
            if (type != QMetaType::QVariant && value.userType() != type)
                return false;
        }
        return m_packet.status() == QDataStream::Ok && m_packet.atEnd();
    }

    QDataStream &m_packet;
    QByteArray *m_unknownHere;
    QByteArray *m_unknownThere;
    int m_memberCount = 0;
    QVector<int> m_propertyTypes;
};

} // namespace

bool isObjectDescription(QDataStream &packet, QByteArray *unknownHere, QByteArray *unknownThere)
{
    return DescriptionReader(packet, unknownHere, unknownThere).read();
}
