#include "ui/search_filter_bar.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>

namespace {

constexpr int c_smallestSizes[] = {1, 5, 10, 50, 100, 500, 1000, 4000}; // MiB
constexpr int c_smallestBitRates[] = {96, 128, 160, 192, 256, 320};     // kbit/s
constexpr long long c_mebibyte = 1024 * 1024;
constexpr int c_editWidth = 90; // at least

} // namespace

SearchFilterBar::SearchFilterBar(QWidget* ip_parent) : QWidget(ip_parent) {
    QHBoxLayout* const lp_layout = new QHBoxLayout(this);
    lp_layout->setContentsMargins(0, 0, 0, 0);

    mp_edit = new QLineEdit;
    mp_edit->setObjectName(QStringLiteral("filterEdit"));
    mp_edit->setClearButtonEnabled(true);
    mp_edit->setMinimumWidth(c_editWidth);
    mp_edit->setPlaceholderText(tr("Words in folder or file"));
    QLabel* const lp_label = new QLabel(tr("Filter:"));
    lp_label->setBuddy(mp_edit);
    lp_layout->addWidget(lp_label);
    lp_layout->addWidget(mp_edit, 1);

    mp_size = AddChoice(lp_layout, "filterSize", tr("Size:"));
    for (const int l_size : c_smallestSizes) {
        const QString l_text = l_size < 1000 ? tr("≥ %1 MB").arg(l_size) : tr("≥ %1 GB").arg(l_size / 1000);
        mp_size->addItem(l_text, l_size < 1000 ? l_size * c_mebibyte : l_size / 1000 * 1024 * c_mebibyte);
    }

    mp_kind = AddChoice(lp_layout, "filterKind", tr("Kind:"));
    mp_kind->addItem(tr("Audio"), static_cast<int>(FileKind::Audio));
    mp_kind->addItem(tr("Video"), static_cast<int>(FileKind::Video));
    mp_kind->addItem(tr("Pictures"), static_cast<int>(FileKind::Picture));
    mp_kind->addItem(tr("Documents"), static_cast<int>(FileKind::Document));
    mp_kind->addItem(tr("Archives"), static_cast<int>(FileKind::Archive));

    mp_bitRate = AddChoice(lp_layout, "filterBitRate", tr("Bit rate:"));
    for (const int l_rate : c_smallestBitRates) {
        mp_bitRate->addItem(tr("≥ %1").arg(l_rate), l_rate);
    }

    mp_slot = AddChoice(lp_layout, "filterSlot", tr("Slot:"));
    mp_slot->addItem(tr("Free"), true);
}

QComboBox* SearchFilterBar::AddChoice(QHBoxLayout* ip_layout, const char* ip_name, const QString& i_label) {
    QComboBox* const lp_choice = new QComboBox;
    lp_choice->setObjectName(QLatin1String(ip_name));
    lp_choice->addItem(tr("any"));
    lp_choice->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    connect(lp_choice, &QComboBox::currentIndexChanged, this, &SearchFilterBar::OnChoice);
    QLabel* const lp_label = new QLabel(i_label);
    lp_label->setBuddy(lp_choice);
    ip_layout->addWidget(lp_label);
    ip_layout->addWidget(lp_choice);
    return lp_choice;
}

void SearchFilterBar::OnChoice() {
    // The first of each has no data.
    m_filter.smallestSize = mp_size->currentData().toLongLong();
    m_filter.smallestBitRate = mp_bitRate->currentData().toInt();
    m_filter.isFreeOnly = mp_slot->currentData().toBool();
    m_filter.kind = std::nullopt;
    if (mp_kind->currentIndex() > 0) {
        m_filter.kind = static_cast<FileKind>(mp_kind->currentData().toInt());
    }
    Q_EMIT Chosen();
}

void SearchFilterBar::Clear() {
    for (QComboBox* const lp_choice : {mp_size, mp_kind, mp_bitRate, mp_slot}) {
        lp_choice->setCurrentIndex(0);
    }
    mp_edit->clear();
}
