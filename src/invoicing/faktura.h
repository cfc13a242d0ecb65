#pragma once

#include "core/firmprofile.h"
#include "courses/searchconditions.h"
#include "forms/resultgridscreen.h"
#include "invoicing/invoiceclosing.h"
#include "invoicing/invoicestore.h"

#include <QDateTime>
#include <QSqlDatabase>
#include <QSet>
#include <functional>

namespace zarek {

class Report;

// The invoicing screen. FaktNew: a client's uninvoiced courses; Space marks those that go on the
// invoice, "Фактура №" takes its number, "Печат" prints the statement, and closing writes the
// number on the marked courses. EditFakt: the courses of an issued invoice, all marked; a course
// unmarked leaves the invoice at closing. The marks stay on the screen until closing writes the
// whole outcome in one transaction.
class Faktura : public ResultGridScreen {
    Q_OBJECT
public:
    Faktura(FakturaMode mode, const SearchConditions &conditions, QSqlDatabase db, QSqlDatabase scratch,
            FirmProfile firm, QWidget *parent = nullptr);

    static ResultGridConfig config(FakturaMode mode, const SearchConditions &conditions);
    // The status text while the screen is open.
    static QString panelText(FakturaMode mode, const SearchConditions &conditions);

    FakturaMode mode() const { return m_mode; }
    QString NomFakt() const { return m_number; }
    bool FaktChosen() const { return m_chosen; }
    bool FaktChanged() const { return changed(); }
    bool FaktPrinted() const { return m_printed; }
    Money FaktSum() const { return runningTotal(); }

    // Shows the filled statement; modal print preview unless a test puts its own.
    std::function<void(const Report &)> showStatement;
    // The reason of the credit note for courses taken off an issued tax invoice; none: the
    // screen stays open. A text box unless a test puts its own.
    std::function<std::optional<QString>()> askReason;
    // The tax document recorded at closing (the invoice, or the credit note): 0 when none.
    qint64 issuedDocument() const { return m_issuedDocument; }
    // The issued tax invoice corrected (EditFakt); 0 when the invoice predates tax invoices.
    qint64 taxInvoiceId() const { return m_taxInvoiceId; }
    // The moment stamped on the courses written at closing.
    std::function<QDateTime()> clock = [] { return QDateTime::currentDateTime(); };

    // "Фактура №": asks the number in DiaFakt.
    void chooseNumber();
    // "Печат": the statement of the marked courses.
    void print();

protected:
    void onPrint() override { print(); }
    bool onSettle() override { return settle(); }
    Currency totalsCurrencyOf(bool anyEuro) const override;
    // The invoice's sum as its statement states it.
    Money marksTotal() const override;

private:
    bool settle();
    void readAgain();
    QString text1() const;

    FakturaMode m_mode;
    SearchConditions m_conditions;
    FakturaSelection m_selection;
    QSqlDatabase m_db;
    QSqlDatabase m_scratch;
    FirmProfile m_firm;
    QString m_number;
    bool m_chosen = false;
    bool m_printed = false;
    QList<qint64> markedCourses() const;
    // The courses of these ids as the invoice states them, in its currency.
    QList<InvoiceCourse> invoiceCourses(const QSet<qint64> &ids, Currency currency) const;
    std::optional<TaxDocument> taxInvoiceOf(const QList<CourseWrite> &writes, bool &refused);

    IssueChoices m_choices;  // FaktNew: chosen with the number
    qint64 m_taxInvoiceId = 0;
    qint64 m_issuedDocument = 0;

    std::optional<Currency> m_invoiceCurrency;  // EditFakt: the currency the invoice was issued in
    // FaktNew: the courses of the last statement printed under the number chosen, and its
    // currency. Closing numbers only these courses, in this currency.
    QList<qint64> m_statement;
    Currency m_printedCurrency = Currency::Leva;
    QPushButton *m_fakt = nullptr;
};

}
