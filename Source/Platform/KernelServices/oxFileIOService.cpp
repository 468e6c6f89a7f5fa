#include "oxFileIOService.h"

oxFileIOService::oxFileIOService(QObject *parent)
    : oxBaseService(parent)
{}

oxFileIOService::~oxFileIOService() = default;

bool oxFileIOService::newFile()
{
    return call<bool>(staticMetaObject, "newFile()");
}

bool oxFileIOService::loadFile(const QString &file)
{
    return call<bool>(staticMetaObject, "loadFile(QString)", file);
}

bool oxFileIOService::saveFile(const QString &file)
{
    return call<bool>(staticMetaObject, "saveFile(QString)", file);
}

QString oxFileIOService::getTARNDir()
{
    return call<QString>(staticMetaObject, "getTARNDir()");
}

QString oxFileIOService::getTARNDataDir()
{
    return call<QString>(staticMetaObject, "getTARNDataDir()");
}

QString oxFileIOService::getTARNExamplesDir()
{
    return call<QString>(staticMetaObject, "getTARNExamplesDir()");
}

QString oxFileIOService::getImageReadFilter()
{
    return call<QString>(staticMetaObject, "getImageReadFilter()");
}

QString oxFileIOService::getImageWriteFilter()
{
    return call<QString>(staticMetaObject, "getImageWriteFilter()");
}
