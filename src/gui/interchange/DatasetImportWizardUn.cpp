// The import wizard's window: its pages, the route map and the navigation buttons. Opening the
// workbook, reading the sheet and importing its rows are in DatasetImportWizardWork.cpp.

#include "gui/interchange/DatasetImportWizardUn.h"

#include "core/interchange/WorkbookReader.h"
#include "gui/app/UserMessages.h"
#include "gui/connections/FileNameEdit.h"
#include "gui/interchange/SheetPreviewModel.h"

#include <QComboBox>
#include <QFontMetrics>
#include <QFrame>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QStackedWidget>
#include <QTableView>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace {

struct PageText
{
    const char *name;
    const char *title;
    const char *subtitle;
};

// The subtitles' leading blanks are part of the texts as the wizard has always shown them.
const PageText kPages[] = {
    {"WelcomeP", "Welcome to Data Import Wizard", "Vantry: spreadsheet sheets into your tables, row by row"},
    {"UseMaskP", "Source File", "Please Choose a Source File"},
    {"SourceIsTableOrSqlP", "Source Tables", " Select source sheet to load data from"},
    {"ReadyP", "Ready to process", "  Click Process Now to start loading the data"},
};

} // namespace

const QString &TDatasetImportWizardFrm::fileFilter()
{
    static const QString filter = QStringLiteral("Excel Files|*.xls;*.xlsx;*.xlsm;*.xlsb|All files (*.*)|*.*");
    return filter;
}

TDatasetImportWizardFrm::TDatasetImportWizardFrm(DatasetImportTarget *target, QWidget *parent)
    : QDialog(parent), m_target(target), m_readTimer(new QTimer(this)), m_preview(new SheetPreviewModel(this))
{
    setObjectName(QStringLiteral("DatasetImportWizardFrm"));
    setWindowTitle(QStringLiteral("Data Import Wizard"));
    setSizeGripEnabled(true);

    RouteMapSteps = new QListWidget(this);
    RouteMapSteps->setObjectName(QStringLiteral("RouteMapSteps"));
    RouteMapSteps->setFocusPolicy(Qt::NoFocus);
    // The route map shows where the user is; it is not a way to jump between pages.
    RouteMapSteps->viewport()->setAttribute(Qt::WA_TransparentForMouseEvents);
    RouteMapSteps->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // Wide enough for every step in bold, the current step's look.
    QFont bold = RouteMapSteps->font();
    bold.setBold(true);
    int widest = 0;
    for (const PageText &page : kPages) {
        RouteMapSteps->addItem(QString::fromLatin1(page.title));
        widest = std::max(widest, QFontMetrics(bold).horizontalAdvance(QString::fromLatin1(page.title)));
    }
    RouteMapSteps->setFixedWidth(widest + 2 * RouteMapSteps->frameWidth() + 16);

    m_title = new QLabel(this);
    m_title->setObjectName(QStringLiteral("lbTitle"));
    QFont titleFont = m_title->font();
    titleFont.setBold(true);
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.3);
    m_title->setFont(titleFont);
    m_subtitle = new QLabel(this);
    m_subtitle->setObjectName(QStringLiteral("lbSubtitle"));
    auto *rule = new QFrame(this);
    rule->setFrameShape(QFrame::HLine);
    rule->setFrameShadow(QFrame::Sunken);

    m_pages = new QStackedWidget(this);
    m_pages->setObjectName(QStringLiteral("Pages"));
    m_pages->addWidget(makeWelcomePage());
    m_pages->addWidget(makeFilePage());
    m_pages->addWidget(makeSheetPage());
    m_pages->addWidget(makeReadyPage());

    auto *content = new QVBoxLayout;
    content->addWidget(m_title);
    content->addWidget(m_subtitle);
    content->addWidget(rule);
    content->addWidget(m_pages, 1);
    auto *body = new QHBoxLayout;
    body->addWidget(RouteMapSteps);
    body->addLayout(content, 1);

    m_help = makeButton("btnHelp", QStringLiteral("&Help"));
    m_toStart = makeButton("btnToStart", QStringLiteral("To &Start Page"));
    m_toLast = makeButton("btnToLast", QStringLiteral("To &Last Page"));
    m_back = makeButton("btnBack", QStringLiteral("< &Back"));
    m_next = makeButton("btnNext", QStringLiteral("&Next >"));
    m_finish = makeButton("btnFinish", QStringLiteral("&Finish"));
    m_cancel = makeButton("btnCancel", QStringLiteral("Cancel"));
    m_next->setDefault(true);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_help);
    buttons->addStretch(1);
    for (QPushButton *button : {m_toStart, m_toLast, m_back, m_next, m_finish, m_cancel})
        buttons->addWidget(button);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(body, 1);
    auto *bottomRule = new QFrame(this);
    bottomRule->setFrameShape(QFrame::HLine);
    bottomRule->setFrameShadow(QFrame::Sunken);
    layout->addWidget(bottomRule);
    layout->addLayout(buttons);

    connect(m_help, &QPushButton::clicked, this, &TDatasetImportWizardFrm::helpClick);
    connect(m_toStart, &QPushButton::clicked, this, &TDatasetImportWizardFrm::toStartClick);
    connect(m_toLast, &QPushButton::clicked, this, &TDatasetImportWizardFrm::toLastClick);
    connect(m_back, &QPushButton::clicked, this, &TDatasetImportWizardFrm::backClick);
    connect(m_next, &QPushButton::clicked, this, &TDatasetImportWizardFrm::nextClick);
    connect(m_finish, &QPushButton::clicked, this, &TDatasetImportWizardFrm::finishClick);
    connect(m_cancel, &QPushButton::clicked, this, &TDatasetImportWizardFrm::reject);
    connect(StartBtn, &QPushButton::clicked, this, &TDatasetImportWizardFrm::StartBtnClick);
    m_readTimer->setInterval(100);
    connect(m_readTimer, &QTimer::timeout, this, &TDatasetImportWizardFrm::showReadProgress);

    resize(820, 560);
    showPage(WelcomePage);
}

TDatasetImportWizardFrm::~TDatasetImportWizardFrm()
{
    if (m_read)
        m_read->cancel = true;  // a sheet still being read stops; its thread holds the workbook
}

TDatasetImportWizardFrm *TDatasetImportWizardFrm::Execute(DatasetImportTarget *target, QWidget *parent)
{
    auto *wizard = new TDatasetImportWizardFrm(target, parent);
    wizard->setAttribute(Qt::WA_DeleteOnClose);
    wizard->setWindowModality(Qt::ApplicationModal);
    wizard->show();
    return wizard;
}

QPushButton *TDatasetImportWizardFrm::makeButton(const char *name, const QString &caption)
{
    auto *button = new QPushButton(caption, this);
    button->setObjectName(QString::fromLatin1(name));
    button->setAutoDefault(false);
    return button;
}

QWidget *TDatasetImportWizardFrm::makeWelcomePage()
{
    auto *page = new QWidget(this);
    page->setObjectName(QString::fromLatin1(kPages[WelcomePage].name));
    auto *layout = new QVBoxLayout(page);
    auto *text = new QLabel(QStringLiteral("Please click next to start using Data Import wizard"), page);
    text->setObjectName(QStringLiteral("lbWelcome"));
    text->setWordWrap(true);
    layout->addWidget(text);
    layout->addStretch(1);
    return page;
}

QWidget *TDatasetImportWizardFrm::makeFilePage()
{
    auto *page = new QWidget(this);
    page->setObjectName(QString::fromLatin1(kPages[FilePage].name));
    auto *group = new QGroupBox(QStringLiteral("File Name:"), page);
    group->setObjectName(QStringLiteral("gbFileName"));
    fe = new TFileNameEdit(group);
    fe->setObjectName(QStringLiteral("fe"));
    fe->setFilter(fileFilter());
    auto *groupLayout = new QVBoxLayout(group);
    groupLayout->addWidget(fe);
    m_fileState = new QLabel(page);
    m_fileState->setObjectName(QStringLiteral("lbFileState"));
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(group);
    layout->addWidget(m_fileState);
    layout->addStretch(1);
    return page;
}

QWidget *TDatasetImportWizardFrm::makeSheetPage()
{
    auto *page = new QWidget(this);
    page->setObjectName(QString::fromLatin1(kPages[SheetPage].name));
    auto *label = new QLabel(QStringLiteral("Source Sheet:"), page);
    label->setObjectName(QStringLiteral("lbSheet"));
    cbSheet = new QComboBox(page);
    cbSheet->setObjectName(QStringLiteral("cbSheet"));
    cbSheet->setEditable(true);  // a sheet name may be typed, in double quotes or without
    cbSheet->setInsertPolicy(QComboBox::NoInsert);
    cbSheet->setMinimumWidth(260);
    label->setBuddy(cbSheet);
    auto *row = new QHBoxLayout;
    row->addWidget(label);
    row->addWidget(cbSheet, 1);
    auto *layout = new QVBoxLayout(page);
    layout->addLayout(row);
    layout->addStretch(1);
    return page;
}

QWidget *TDatasetImportWizardFrm::makeReadyPage()
{
    auto *page = new QWidget(this);
    page->setObjectName(QString::fromLatin1(kPages[ReadyPage].name));
    ProgressLbl = new QLabel(QStringLiteral("Ready"), page);
    ProgressLbl->setObjectName(QStringLiteral("ProgressLbl"));
    pb = new QProgressBar(page);
    pb->setObjectName(QStringLiteral("pb"));
    pb->setFormat(QStringLiteral("Progress...[%p%]"));
    pb->setTextVisible(true);
    pb->setValue(0);
    StartBtn = new QPushButton(QStringLiteral("Process Now"), page);
    StartBtn->setObjectName(QStringLiteral("StartBtn"));
    StartBtn->setAutoDefault(false);
    StartBtn->setEnabled(false);
    gData = new QTableView(page);
    gData->setObjectName(QStringLiteral("gData"));
    gData->setModel(m_preview);
    // Titles are cells of the grid's own (row 0 and column 0), as in the sheet's layout.
    gData->horizontalHeader()->hide();
    gData->verticalHeader()->hide();
    gData->verticalHeader()->setDefaultSectionSize(gData->fontMetrics().height() + 6);
    gData->horizontalHeader()->setDefaultSectionSize(90);
    // The title column holds row numbers only; the status column has room for a database's error.
    connect(m_preview, &QAbstractItemModel::modelReset, gData, [this] {
        if (m_preview->columnCount() > 0) {
            gData->setColumnWidth(0, 50);
            gData->setColumnWidth(m_preview->columnCount() - 1, 320);
        }
    });
    gData->setEditTriggers(QAbstractItemView::NoEditTriggers);
    gData->setWordWrap(false);
    auto *progress = new QHBoxLayout;
    progress->addWidget(pb, 1);
    progress->addWidget(StartBtn);
    auto *layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(ProgressLbl);
    layout->addLayout(progress);
    layout->addWidget(gData, 1);
    return page;
}

int TDatasetImportWizardFrm::currentPage() const
{
    return m_pages->currentIndex();
}

void TDatasetImportWizardFrm::showPage(int page)
{
    m_pages->setCurrentIndex(page);
    m_title->setText(QString::fromLatin1(kPages[page].title));
    m_subtitle->setText(QString::fromLatin1(kPages[page].subtitle));
    for (int i = 0; i < RouteMapSteps->count(); ++i) {
        QListWidgetItem *item = RouteMapSteps->item(i);
        QFont font = item->font();
        font.setBold(i == page);
        item->setFont(font);
    }
    RouteMapSteps->setCurrentRow(page);
    if (page == FilePage)
        fe->setFocus();
    else if (page == SheetPage)
        cbSheet->setFocus();
    updateButtons();
}

void TDatasetImportWizardFrm::setWork(Work work)
{
    m_work = work;
    updateButtons();
}

void TDatasetImportWizardFrm::updateButtons()
{
    const int page = currentPage();
    const bool idle = m_work == Work::None;
    m_toStart->setEnabled(idle && page != WelcomePage);
    m_toLast->setEnabled(idle && page != ReadyPage && m_sheet);
    m_back->setEnabled(idle && page != WelcomePage);
    m_next->setEnabled(idle && page != ReadyPage);
    m_finish->setEnabled(idle && page == ReadyPage);
    StartBtn->setEnabled(idle && m_sheet && !m_imported);
    fe->setEnabled(idle);
    cbSheet->setEnabled(idle);
    if (page == ReadyPage && idle)
        m_finish->setDefault(true);
    else
        m_next->setDefault(true);
}

void TDatasetImportWizardFrm::nextClick()
{
    if (!m_next->isEnabled())
        return;
    switch (currentPage()) {
    case WelcomePage:
        showPage(FilePage);
        break;
    case FilePage:
        UseMaskPNextButtonClick();
        break;
    case SheetPage:
        SourceIsTableOrSqlPNextButtonClick();
        break;
    default:
        break;
    }
}

void TDatasetImportWizardFrm::backClick()
{
    if (m_back->isEnabled())
        showPage(currentPage() - 1);
}

void TDatasetImportWizardFrm::toStartClick()
{
    if (m_toStart->isEnabled())
        showPage(WelcomePage);
}

void TDatasetImportWizardFrm::toLastClick()
{
    // The ready page needs its sheet: the button is enabled once one has been read.
    if (m_toLast->isEnabled())
        showPage(ReadyPage);
}

void TDatasetImportWizardFrm::finishClick()
{
    if (m_finish->isEnabled())
        accept();
}

void TDatasetImportWizardFrm::helpClick()
{
    UserMessages::information(
        this, QStringLiteral("Choose a workbook (.xls, .xlsx, .xlsm or .xlsb), then one of its sheets. The ready page "
                             "previews the sheet; Process Now appends one row to the result for every sheet row "
                             "and writes it to the database. The result's visible fields take the sheet's "
                             "columns in order, starting at column 2; an empty cell gives NULL. The Status column "
                             "shows OK for each row written, or why the database refused it."));
}
