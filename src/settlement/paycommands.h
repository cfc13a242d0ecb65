#pragma once

#include "courses/searchconditions.h"

namespace zarek {

class CommandRegistry;
struct CommandContext;

// "Заплати" (the driver's pay sheet with its receipt) and "Корекция плащане" (Plashtane).
void registerDriverPayCommands(CommandRegistry &commands);

// The paid (or unpaid) list of a driver's courses, for "Курсове от шофьор".
void showDriverCourseList(CommandContext &context, bool paid, const SearchConditions &conditions);

}
