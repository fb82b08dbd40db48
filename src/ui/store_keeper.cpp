#include "ui/store_keeper.h"

#include "app/text.h"

#include <QDir>

#include <system_error>

namespace {

std::unique_ptr<BackgroundWorker> NewWriter() {
    return std::make_unique<BackgroundWorker>("store writer");
}

} // namespace

StoreKeeper::StoreKeeper() : m_path(ToUtf8(QDir::homePath()) + "/.Tidewell"), mp_writer(NewWriter()) {}

LoadResult StoreKeeper::Load() {
    return dataSaver->Load(&d, m_path.c_str());
}

// What is being written is older: it must not come last.
SaveResult StoreKeeper::SaveNow() {
    if (m_isWriting) {
        mp_writer = NewWriter(); // the former one finishes its file first
        m_isWriting = false;
    }
    d.RemoveDisconnectedItems();
    SaveResult l_result = dataSaver->Save(&d, m_path.c_str());
    Report(l_result);
    return l_result;
}

void StoreKeeper::SaveInBackground() {
    if (m_isWriting) {
        return;
    }
    m_isWriting = true;
    d.RemoveDisconnectedItems();
    mp_writer->Do([this, l_image = dataSaver->MakeImage(&d), l_path = m_path](const std::atomic<bool>&) {
        return [this, l_result = DataSaver::WriteImage(l_image, l_path.c_str())] {
            m_isWriting = false;
            Report(l_result);
        };
    });
}

void StoreKeeper::Report(const SaveResult& i_result) {
    if (i_result.isSaved == m_isFine) {
        return;
    }
    m_isFine = i_result.isSaved;
    if (m_isFine) {
        Q_EMIT Recovered();
    } else {
        Q_EMIT Failed(ToQString(std::generic_category().message(i_result.error)));
    }
}
