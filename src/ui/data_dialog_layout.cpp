// The store browser's widgets.
#include "ui/data_dialog.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScrollBar>
#include <QSplitter>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

constexpr int c_typePaneWidth = 300;
constexpr QSize c_windowSize(1000, 600);
constexpr std::chrono::milliseconds c_typingPause(150);

template <class Widget>
Widget* Named(Widget* ip_widget, const char* ip_name) {
    ip_widget->setObjectName(QLatin1String(ip_name));
    return ip_widget;
}

QLineEdit* MakeFilter(const char* ip_name, const QString& i_text) {
    QLineEdit* const lp_edit = Named(new QLineEdit, ip_name);
    lp_edit->setPlaceholderText(i_text);
    lp_edit->setAccessibleName(i_text);
    lp_edit->setClearButtonEnabled(true);
    return lp_edit;
}

QWidget* Pane(std::initializer_list<QWidget*> i_widgets) {
    QWidget* const lp_pane = new QWidget;
    QVBoxLayout* const lp_layout = new QVBoxLayout(lp_pane);
    lp_layout->setContentsMargins(0, 0, 0, 0);
    for (QWidget* lp_widget : i_widgets) {
        lp_layout->addWidget(lp_widget);
    }
    return lp_pane;
}

} // namespace

void DataDialog::BuildLayout() {
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("dataDialog"));
    setWindowTitle(tr("Data"));
    resize(c_windowSize);

    mp_itemDataTree = Named(new QTreeWidget, "itemDataTree");
    mp_itemDataTree->setHeaderHidden(true);
    mp_itemDataTree->setUniformRowHeights(true);
    mp_itemDataTree->setAccessibleName(tr("Connections of the item"));
    connect(mp_itemDataTree, &QTreeWidget::itemExpanded, this, &DataDialog::OnDataSubItemExpanded);
    connect(mp_itemDataTree, &QTreeWidget::itemClicked, this, &DataDialog::OnNodeClicked);
    connect(mp_itemDataTree, &QTreeWidget::itemActivated, this, &DataDialog::OnNodeClicked);

    QSplitter* const lp_itemSplitter = Named(new QSplitter(Qt::Horizontal), "itemSplitter");
    lp_itemSplitter->addWidget(MakeItemPane());
    lp_itemSplitter->addWidget(mp_itemDataTree);
    QSplitter* const lp_typeSplitter = Named(new QSplitter(Qt::Horizontal), "typeSplitter");
    lp_typeSplitter->addWidget(MakeTypePane());
    lp_typeSplitter->addWidget(lp_itemSplitter);
    lp_typeSplitter->setSizes({c_typePaneWidth, c_windowSize.width() - c_typePaneWidth});
    lp_typeSplitter->setStretchFactor(0, 0);
    lp_typeSplitter->setStretchFactor(1, 1);

    QVBoxLayout* const lp_layout = new QVBoxLayout(this);
    lp_layout->addWidget(lp_typeSplitter, 1);
    lp_layout->addWidget(MakeFoot());
}

QWidget* DataDialog::MakeTypePane() {
    mp_typeFilter = MakeFilter("typeFilter", tr("Filter Types"));
    connect(mp_typeFilter, &QLineEdit::textChanged, this, &DataDialog::OnTypeFilterChanged);

    mp_typeList = Named(new QTreeWidget, "typeList");
    mp_typeList->setHeaderLabels({tr("Type"), QString(), tr("#")});
    mp_typeList->header()->setStretchLastSection(false); // the names give way: the counts are to be seen
    mp_typeList->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    mp_typeList->setRootIsDecorated(false);
    mp_typeList->setUniformRowHeights(true);
    mp_typeList->setAllColumnsShowFocus(true);
    mp_typeList->setAccessibleName(tr("Types"));
    connect(mp_typeList, &QTreeWidget::itemSelectionChanged, this, &DataDialog::OnTypeItemSelectionChanged);
    return Pane({mp_typeFilter, mp_typeList});
}

QWidget* DataDialog::MakeItemPane() {
    mp_itemFilter = MakeFilter("itemFilter", tr("Filter items"));
    m_filterPause.setSingleShot(true);
    m_filterPause.setInterval(c_typingPause);
    connect(mp_itemFilter, &QLineEdit::textChanged, &m_filterPause, qOverload<>(&QTimer::start));
    connect(&m_filterPause, &QTimer::timeout, this, &DataDialog::OnFilterPause);
    connect(&m_readTimer, &QTimer::timeout, this, &DataDialog::OnReadMore);

    mp_itemList = Named(new QListWidget, "itemList");
    mp_itemList->setUniformItemSizes(true);
    mp_itemList->setAccessibleName(tr("Items of the Type"));
    connect(mp_itemList, &QListWidget::itemClicked, this, &DataDialog::OnItemClicked);
    connect(mp_itemList, &QListWidget::itemActivated, this, &DataDialog::OnItemClicked);
    connect(mp_itemList->verticalScrollBar(), &QScrollBar::valueChanged, this, &DataDialog::AddSliceAtEnd);

    mp_itemCount = Named(new QLabel, "itemCount");
    return Pane({mp_itemFilter, mp_itemList, mp_itemCount});
}

QWidget* DataDialog::MakeFoot() {
    mp_result = Named(new QLabel, "resultLabel");
    mp_result->setTextFormat(Qt::PlainText);
    QPushButton* const lp_sweepButton = Named(new QPushButton(tr("S&weep now")), "sweepButton");
    mp_saveButton = Named(new QPushButton(tr("&Save now")), "saveButton");
    mp_saveButton->setEnabled(false);
    for (QPushButton* lp_button : {lp_sweepButton, mp_saveButton}) {
        // The Return key belongs to the lists and the filters.
        lp_button->setAutoDefault(false);
    }
    connect(lp_sweepButton, &QPushButton::clicked, this, &DataDialog::OnSweepClicked);
    connect(mp_saveButton, &QPushButton::clicked, this, &DataDialog::OnSaveClicked);

    QWidget* const lp_foot = new QWidget;
    QHBoxLayout* const lp_layout = new QHBoxLayout(lp_foot);
    lp_layout->setContentsMargins(0, 0, 0, 0);
    lp_layout->addWidget(lp_sweepButton);
    lp_layout->addWidget(mp_saveButton);
    lp_layout->addWidget(mp_result, 1);
    return lp_foot;
}
