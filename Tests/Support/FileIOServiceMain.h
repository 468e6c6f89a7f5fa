#pragma once

#include <QStringList>
#include <QVector>

#include "oxFileIOService.h"

/// The main process's file service: a load emits the given values and has the given result.
class FileIOServiceMain : public oxFileIOService
{
public:
    QVector<int> values;
    bool result = true;
    QStringList files; ///< those that were loaded

    bool loadFile(const QString &file) override
    {
        files.append(file);
        for (const int value : values)
            Q_EMIT progress(value);
        return result;
    }
};
