#pragma once

#include "oxdObject.h"

/// A web page that the main process draws into a texture of a material.
class OXKERNELSERVICES_EXPORT oxdWebEngine : public virtual oxdObject
{
    Q_OBJECT

public:
    /// The texture that the page is drawn into. On a data stream a qint32.
    enum TextureSlotType : qint32 {
        DiffuseTexture,
        GlossyTexture,
        IncandescenceTexture,
        TransparencyTexture,
        BumpTexture,
    };
    Q_ENUM(TextureSlotType)

    explicit oxdWebEngine(unsigned long long id = 0) { initialize(id); }
};

QT_BEGIN_NAMESPACE
/// Deliberate: the flags of the enumeration's meta-type ask for construction and destruction, which
/// no enumeration needs and Q_DECLARE_TYPEINFO takes back for a trivial type.
template<>
class QTypeInfo<oxdWebEngine::TextureSlotType> : public QTypeInfoMerger<oxdWebEngine::TextureSlotType, qint32>
{
public:
    enum { isComplex = true };
};
QT_END_NAMESPACE

OXD_WEB_ENGINE(OXD_DECLARE_METATYPES)
