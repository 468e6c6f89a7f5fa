#pragma once

#include <QString>

#include "oxBaseService.h"

/// Loads and saves files in the main process.
///
/// Each operation calls the main process and answers with a default value without a connection.
class OXKERNELSERVICES_EXPORT oxFileIOService : public oxBaseService
{
    Q_OBJECT

public:
    explicit oxFileIOService(QObject *parent = nullptr);
    ~oxFileIOService() override;

public Q_SLOTS:
    // Their order is that of the slots in the table of virtual functions: part of the interface.
    virtual bool newFile();
    virtual bool loadFile(const QString &file);
    virtual bool saveFile(const QString &file);
    virtual QString getTARNDir();
    virtual QString getTARNDataDir();
    virtual QString getTARNExamplesDir();
    virtual QString getImageReadFilter();
    virtual QString getImageWriteFilter();

Q_SIGNALS:
    /// How far a load is, in per cent; 100 when the file is read and its upload begins.
    void progress(int percent);
};
