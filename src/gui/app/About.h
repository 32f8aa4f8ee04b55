#pragma once
#include <QDialog>

// The About box: product description, picture, version, the home page and the support address.
class TAboutFrm : public QDialog
{
    Q_OBJECT
public:
    explicit TAboutFrm(QWidget *parent = nullptr);

    static QString homePageUrl();
    static QString supportUrl();     // the support forum page (Help menu)
    static QString supportMailUrl(); // a new mail to support (About box)
};
