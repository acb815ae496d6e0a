#pragma once

#include <QDialog>

class QFrame;
class QGroupBox;
class QLabel;
class QPushButton;

// Where the maker answers: the support website and mailbox behind the support face's buttons.
inline const QString kSupportWebsite = QStringLiteral("https://support.example.com");
inline const QString kSupportMailbox = QStringLiteral("support@example.com");

// Who and what is running: the product, its version, the user and the company. The same window
// has a second face, the ways of getting support, chosen by bIsAbout before it is shown.
class frmAbout : public QDialog {
public:
    // `companyName` is the company of the open database, shown under the user.
    explicit frmAbout(const QString& companyName, QWidget* parent = nullptr);

    // Loads the face that bIsAbout chooses and shows the window modally until it is closed.
    void ShowModal(QWidget* owner);
    void Command1_Click();
    void cmdWeb_Click();
    void cmdEmail_Click();

    bool bIsAbout = false;

    QPushButton* Command1;
    QFrame* Frame1;
    QLabel* picSplash;
    QLabel* lblMain[1];
    QLabel* lblVersion;
    QLabel* lblUser[3] = {};  // 1 the user, 2 the company; 0 is not on the window
    QLabel* lblSlogan;
    QLabel* lblCompany;
    QLabel* Label5;
    QLabel* Label1;
    QFrame* Line1;
    QGroupBox* frameSupport;
    QLabel* Label2[4];
    QPushButton* cmdWeb;
    QPushButton* cmdEmail;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void buildAboutFace();
    void buildSupportFace();
    void Form_Load();
    void loadAboutFace();
    void loadSupportFace();

    QString companyName_;
};

// The console's About: the about face for the logged-on user, modally over `owner`.
void ShowAbout(QWidget* owner, const QString& companyName);
