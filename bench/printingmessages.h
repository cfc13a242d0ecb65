#pragma once

#include "forms/messageservice.h"

#include <cstdio>

namespace zarek::bench {

// No box may stop a benchmark: a message is printed, and every question is answered yes.
class PrintingMessages : public MessageService {
public:
    void inform(const UserMessage &m) override { std::printf("  message: %s\n", qPrintable(m.text)); }
    bool ask(const UserMessage &) override { return true; }
    void beep() override {}
};

}
