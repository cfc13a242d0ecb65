#pragma once

#include "forms/commonbox.h"

namespace zarek {

// The information box: icon Image1, the message in Label1 and OKButton "Затвори". Its caption
// is "Информация" unless the message brings one ("ГРЕШКА при запис!", "ВНИМАНИЕ!").
class DiaInf : public CommonBox {
    Q_OBJECT
public:
    explicit DiaInf(const UserMessage &message, QWidget *parent = nullptr);

    QPushButton *okButton() const { return m_ok; }

private:
    QPushButton *m_ok = nullptr;
};

}
