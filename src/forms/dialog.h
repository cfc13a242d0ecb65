#pragma once

#include "forms/commonbox.h"

namespace zarek {

// The question box: icon Picture1, the question in Label1, OKButton "OK" and CancelButton
// "Отказ" (or "Да" and "Не"). Its caption is "Внимание!" unless the question brings one.
// OkPressed() tells which button closed it; closed any other way (Esc, the close box) it reads
// as not confirmed. The default button holds the keyboard focus as the box opens, so Enter
// (and Space) answer the default.
class Dialog : public CommonBox {
    Q_OBJECT
public:
    enum class Buttons { OkCancel, YesNo };
    enum class Default { Ok, Cancel };

    // "OK" is the default of an OK/Отказ question, "Не" that of a Да/Не question.
    explicit Dialog(const UserMessage &question, Buttons buttons = Buttons::OkCancel, QWidget *parent = nullptr);
    Dialog(const UserMessage &question, Buttons buttons, Default byDefault, QWidget *parent = nullptr);

    bool OkPressed() const { return m_okPressed; }
    QPushButton *okButton() const { return m_ok; }
    QPushButton *cancelButton() const { return m_cancel; }
    QPushButton *defaultButton() const { return m_default; }

protected:
    void showEvent(QShowEvent *event) override;

private:
    QPushButton *m_ok = nullptr;
    QPushButton *m_cancel = nullptr;
    QPushButton *m_default = nullptr;
    bool m_okPressed = false;
};

}
