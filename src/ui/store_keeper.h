// Keeps the store's file: the one place that knows where it lies and when it is written.
#pragma once

#include "app/background_worker.h"
#include "store/data_saver.h"

#include <QObject>

#include <memory>
#include <string>

class StoreKeeper : public QObject {
    Q_OBJECT

public:
    // dataSaver exists, and outlives this object.
    StoreKeeper();

    const std::string& Path() const { return m_path; }

    LoadResult Load();

    // Both drop what nothing reaches any more and then write the store as it is at this moment. The first returns when
    // the bytes are on the disk. The second leaves that to another thread: a disk may take seconds for it, and the
    // window would stand still. While it is at it further ones do nothing.
    SaveResult SaveNow();
    void SaveInBackground();

Q_SIGNALS:
    // After a failure: the next save has succeeded.
    void Recovered();
    // The first failure in a row.
    void Failed(const QString& i_reason);

private:
    void Report(const SaveResult& i_result);

    std::string m_path;
    bool m_isFine = true; // as far as the last save tells
    bool m_isWriting = false;
    std::unique_ptr<BackgroundWorker> mp_writer;
};
