// What stands in a page's place after its process has died.
#pragma once

#include <QWidget>

class QPushButton;

namespace quenby {

class ProcessGoneMessage final : public QWidget {
    Q_OBJECT

public:
    explicit ProcessGoneMessage(QWidget* parent);

Q_SIGNALS:
    void reloadRequested();

private:
    QPushButton* const reload_;
};

} // namespace quenby
