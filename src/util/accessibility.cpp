#include "util/accessibility.h"

#include <QAccessibleWidget>
#include <QHash>
#include <QLabel>
#include <QPointer>
#include <QTabBar>

namespace {

// A caption as it is spoken: without the marks of its keyboard shortcut.
QString spoken(QString caption) {
    static const QChar kMark('&');
    for (qsizetype i = caption.indexOf(kMark); i >= 0; i = caption.indexOf(kMark, i + 1)) {
        caption.remove(i, 1);  // a doubled mark leaves one behind, which the next turn skips
    }
    return caption;
}

// One tab of a strip. It has no object of its own: the strip draws it.
class TabAccessible : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    TabAccessible(QTabBar* strip, int index) : strip_(strip), index_(index) {}

    int index() const { return index_; }

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }
    bool isValid() const override { return strip_ && index_ < strip_->count(); }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return isValid() ? parent()->window() : nullptr; }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(strip_.data());
    }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessible::Role role() const override { return QAccessible::PageTab; }
    void setText(QAccessible::Text, const QString&) override {}

    QString text(QAccessible::Text kind) const override {
        if (!isValid()) {
            return QString();
        }
        switch (kind) {
            case QAccessible::Name:
                return spoken(strip_->tabText(index_));
            case QAccessible::Description:
                return strip_->tabToolTip(index_);
            default:
                return QString();
        }
    }

    QAccessible::State state() const override {
        QAccessible::State state;
        if (!isValid()) {
            state.invalid = true;
            return state;
        }
        state = parent()->state();
        state.focused = index_ == strip_->currentIndex();
        state.selectable = true;
        state.selected = state.focused;
        if (!strip_->isTabVisible(index_)) {
            state.invisible = true;
            state.offscreen = true;
            state.focusable = false;
            state.focused = false;
            state.selectable = false;
            state.selected = false;
        }
        if (!strip_->isTabEnabled(index_)) {
            state.disabled = true;
        }
        return state;
    }

    QRect rect() const override {
        if (!shown()) {
            return QRect();
        }
        const QRect tab = strip_->tabRect(index_);
        return QRect(strip_->mapToGlobal(tab.topLeft()), tab.size());
    }

    QStringList actionNames() const override {
        return canOpen() ? QStringList{pressAction()} : QStringList();
    }
    void doAction(const QString& action) override {
        if (canOpen() && action == pressAction()) {
            strip_->setCurrentIndex(index_);
        }
    }
    QStringList keyBindingsForAction(const QString&) const override { return QStringList(); }

private:
    bool shown() const { return isValid() && strip_->isTabVisible(index_); }
    bool canOpen() const { return shown() && strip_->isTabEnabled(index_); }

    QPointer<QTabBar> strip_;
    int index_;
};

// A tab strip: its tabs, in the strip's own order so that the strip's notices of a tab reach the
// right one, then its buttons.
class TabStripAccessible : public QAccessibleWidget {
public:
    explicit TabStripAccessible(QTabBar* strip)
        : QAccessibleWidget(strip, QAccessible::PageTabList) {}
    ~TabStripAccessible() override {
        for (QAccessible::Id id : std::as_const(tabs_)) {
            QAccessible::deleteAccessibleInterface(id);
        }
    }

    int childCount() const override { return strip()->count() + QAccessibleWidget::childCount(); }

    QAccessibleInterface* child(int index) const override {
        if (index < 0) {
            return nullptr;
        }
        if (index >= strip()->count()) {
            return QAccessibleWidget::child(index - strip()->count());
        }
        if (const auto known = tabs_.constFind(index); known != tabs_.cend()) {
            return QAccessible::accessibleInterface(*known);
        }
        auto* tab = new TabAccessible(strip(), index);
        tabs_.insert(index, QAccessible::registerAccessibleInterface(tab));
        return tab;
    }

    int indexOfChild(const QAccessibleInterface* child) const override {
        if (const auto* tab = dynamic_cast<const TabAccessible*>(child)) {
            return tab->index();
        }
        const int button = QAccessibleWidget::indexOfChild(child);
        return button < 0 ? -1 : strip()->count() + button;
    }

    QAccessibleInterface* focusChild() const override {
        const int current = strip()->currentIndex();
        return current < 0 ? nullptr : child(current);
    }

    QString text(QAccessible::Text kind) const override {
        if (kind == QAccessible::Name && strip()->currentIndex() >= 0) {
            return spoken(strip()->tabText(strip()->currentIndex()));
        }
        return QAccessibleWidget::text(kind);
    }

private:
    QTabBar* strip() const { return static_cast<QTabBar*>(widget()); }

    mutable QHash<int, QAccessible::Id> tabs_;
};

QAccessibleInterface* tabStripFactory(const QString& className, QObject* object) {
    if (className == QLatin1String("QTabBar") && object && object->isWidgetType()) {
        return new TabStripAccessible(static_cast<QTabBar*>(object));
    }
    return nullptr;
}

}  // namespace

void NameAfterLabel(QWidget* control, const QLabel* label) {
    control->setAccessibleName(label->text());
}

void KeepHiddenTabsOutOfReach() {
    static const bool installed = [] {
        QAccessible::installFactory(tabStripFactory);
        return true;
    }();
    Q_UNUSED(installed);
}
