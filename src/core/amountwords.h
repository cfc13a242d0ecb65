#pragma once

#include "core/currency.h"
#include "core/money.h"

#include <QString>

// An amount written out in Bulgarian words, as the line "Словом: …" of an invoice reads it.
namespace zarek {

// A whole number in words, of the gender the counted word needs: "един", "една", "едно";
// "две хиляди", "двадесет и един", "хиляда двеста тридесет и четири". "и" joins the last word
// of each group of three digits, and the last group to the ones before it when that group is one word
// ("хиляда и двеста", "един милион и сто хиляди").
enum class WordGender { Masculine, Feminine, Neuter };
QString numberInWords(qint64 number, WordGender gender = WordGender::Masculine);

// "хиляда двеста тридесет и четири лева и петдесет и шест стотинки", "едно евро и един евроцент";
// a whole amount has no cents part ("два лева"), a sum under one unit has "нула лева и …".
// Empty for an invalid amount.
QString amountInWords(Money amount, Currency currency);

}
