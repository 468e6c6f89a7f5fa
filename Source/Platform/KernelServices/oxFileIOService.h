#pragma once

#include <QString>

#include "oxBaseService.h"

/// Loads and saves files in the main process.
///
/// Each operation calls the main process and answers with a default value without a connection.
class OXKERNELSERVICES_EXPORT oxFileIOService : public oxBaseService
{
    Q_OBJECT
    Q_CLASSINFO("RemoteObject Type", "oxFileIOService")

public:
    explicit oxFileIOService(QObject *parent = nullptr);
    ~oxFileIOService() override;

public Q_SLOTS:
    // Their order is that of the slots in the table of virtual functions: part of the interface.
    virtual bool newFile();
    /// Shows @p file, which the main process reads, in place of the scene. progress() tells
    /// how far it is while this waits.
    /// @return false when it cannot be read
    virtual bool loadFile(const QString &file);
    virtual bool saveFile(const QString &file);
    virtual QString getTARNDir();
    virtual QString getTARNDataDir();
    virtual QString getTARNExamplesDir();
    virtual QString getImageReadFilter();
    virtual QString getImageWriteFilter();

Q_SIGNALS:
    /// How far a load is, in per cent; 100 when the file is read and while it is uploaded.
    void progress(int percent);
};
