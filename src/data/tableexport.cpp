#include "data/tableexport.h"

#include "core/dates.h"
#include "core/formats.h"
#include "core/valueformat.h"

#include <QFile>
#include <algorithm>
#include <QRegularExpression>
#include <QSaveFile>
#include <xlsxwriter.h>

namespace zarek {

namespace {

UserMessage exportError(const QString &text)
{
    return UserMessage::twoLines(QStringLiteral("ГРЕШКА при запис!"), text,
                                 QStringLiteral("Моля, изберете друго място за файла!"), UserMessage::Icon::Critical);
}

QString yesNo(const QVariant &value) { return value.toBool() ? QStringLiteral("Да") : QStringLiteral("Не"); }

QString csvText(const ExportColumn &column, const QVariant &value)
{
    if (value.isNull())
        return {};
    switch (column.kind) {
    case ExportColumn::Kind::Number: {
        bool ok = false;
        const double number = value.toDouble(&ok);
        if (!ok)
            return value.toString();
        return formatNumber(number, column.decimals, column.decimals + column.extraDecimals);
    }
    case ExportColumn::Kind::Date: {
        const QDate date = dateOfValue(value);
        return date.isValid() ? formatDate(date) : value.toString();
    }
    case ExportColumn::Kind::YesNo:
        return yesNo(value);
    case ExportColumn::Kind::Text:
        break;
    }
    return value.toString();
}

// A spreadsheet reads a cell that begins with = + - @ (or a tab or carriage return) as a formula.
// Such a text is kept a text by a leading apostrophe inside quotes; a plain number stays a number.
bool startsLikeFormula(const QString &text)
{
    static const QRegularExpression plainNumber(QStringLiteral("^[+-]?\\d+([.,]\\d+)?$"));
    if (text.isEmpty())
        return false;
    const QChar first = text.front();
    const bool formulaStart = first == QLatin1Char('=') || first == QLatin1Char('+') || first == QLatin1Char('-')
                              || first == QLatin1Char('@') || first == QLatin1Char('\t') || first == QLatin1Char('\r');
    return formulaStart && !plainNumber.match(text).hasMatch();
}

QString csvQuoted(const QString &text)
{
    if (startsLikeFormula(text)) {
        QString quoted = QLatin1Char('\'') + text;
        quoted.replace(QLatin1Char('"'), QStringLiteral("\"\""));
        return QLatin1Char('"') + quoted + QLatin1Char('"');
    }
    // Quoted when it holds a separator, a quote or a line break, or starts or ends with a blank.
    const bool needsQuotes = !text.isEmpty()
                             && (text.front().isSpace() || text.back().isSpace()
                                 || std::any_of(text.cbegin(), text.cend(), [](QChar c) {
                                        return c == QLatin1Char(';') || c == QLatin1Char('"') || c == QLatin1Char('\r')
                                               || c == QLatin1Char('\n');
                                    }));
    if (!needsQuotes)
        return text;
    QString quoted = text;
    quoted.replace(QLatin1Char('"'), QStringLiteral("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

void appendCsvLine(QByteArray &out, const QStringList &cells)
{
    QStringList quoted;
    quoted.reserve(cells.size());
    for (const QString &cell : cells)
        quoted.append(csvQuoted(cell));
    out += quoted.join(QLatin1Char(';')).toUtf8();
    out += "\r\n";
}

QByteArray excelNumberFormat(int decimals, int extraDecimals = 0)
{
    return decimals + extraDecimals > 0 ? QByteArray("0.") + QByteArray(decimals, '0') + QByteArray(extraDecimals, '#')
                                        : QByteArray("0");
}

}

ExportColumn exportColumnOf(const QString &caption, const QString &format)
{
    ExportColumn column;
    column.caption = caption;
    if (const auto number = numberFormat(format)) {
        column.kind = ExportColumn::Kind::Number;
        column.decimals = number->minDecimals;
        column.extraDecimals = number->maxDecimals - number->minDecimals;
    } else if (format == QLatin1String("Short Date")) {
        column.kind = ExportColumn::Kind::Date;
    } else if (format == QLatin1String("Yes/No")) {
        column.kind = ExportColumn::Kind::YesNo;
    }
    return column;
}

std::optional<UserMessage> writeCsv(const ExportTable &table, const QString &fileName)
{
    QByteArray out("\xEF\xBB\xBF");
    out.reserve(64 + table.rowCount * 16 * qMax<qsizetype>(1, table.columns.size()));
    for (const QString &line : table.titleLines)
        appendCsvLine(out, {line});
    QStringList header;
    for (const ExportColumn &column : table.columns)
        header.append(column.caption);
    appendCsvLine(out, header);
    QStringList cells;
    for (int row = 0; row < table.rowCount; ++row) {
        cells.clear();
        for (int c = 0; c < table.columns.size(); ++c)
            cells.append(csvText(table.columns.at(c), table.cell(row, c)));
        appendCsvLine(out, cells);
    }
    if (!table.totals.isEmpty()) {
        cells.clear();
        for (int c = 0; c < table.columns.size(); ++c) {
            const QVariant value = table.totals.value(c);
            cells.append(c == 0 && value.isNull() ? table.totalsCaption : csvText(table.columns.at(c), value));
        }
        appendCsvLine(out, cells);
    }
    for (const QString &line : table.noteLines)
        appendCsvLine(out, {line});

    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly) || file.write(out) != out.size() || !file.commit())
        return exportError(QStringLiteral("Файлът %1 не може да се запише: %2").arg(fileName, file.errorString()));
    return std::nullopt;
}

std::optional<UserMessage> writeXlsx(const ExportTable &table, const QString &fileName)
{
    // Written beside the target and moved over it at the end, so a failure leaves no half file.
    const QString partial = fileName + QStringLiteral(".part");
    QFile::remove(partial);
    const QByteArray path = QFile::encodeName(partial);
    lxw_workbook_options options{};
    options.constant_memory = LXW_TRUE;  // rows go to disk as they are written: 100,000 rows stay small
    lxw_workbook *workbook = workbook_new_opt(path.constData(), &options);
    if (!workbook)
        return exportError(QStringLiteral("Файлът %1 не може да се създаде.").arg(fileName));
    const QByteArray sheetName = table.sheetName.left(31).toUtf8();
    lxw_worksheet *sheet = workbook_add_worksheet(workbook, sheetName.constData());

    lxw_format *bold = workbook_add_format(workbook);
    format_set_bold(bold);
    lxw_format *dateFormat = workbook_add_format(workbook);
    format_set_num_format(dateFormat, "dd.mm.yyyy");
    QList<lxw_format *> numberFormats, totalFormats;
    for (const ExportColumn &column : table.columns) {
        lxw_format *format = nullptr, *total = bold;
        if (column.kind == ExportColumn::Kind::Number) {
            format = workbook_add_format(workbook);
            format_set_num_format(format, excelNumberFormat(column.decimals, column.extraDecimals).constData());
            total = workbook_add_format(workbook);
            format_set_num_format(total, excelNumberFormat(column.decimals, column.extraDecimals).constData());
            format_set_bold(total);
        }
        numberFormats.append(format);
        totalFormats.append(total);
    }
    for (int c = 0; c < table.columns.size(); ++c) {
        const ExportColumn &column = table.columns.at(c);
        const double width = column.kind == ExportColumn::Kind::Date ? 11
                             : column.kind == ExportColumn::Kind::Text ? qMax(14.0, column.caption.size() + 2.0)
                                                                         : qMax(10.0, column.caption.size() + 2.0);
        worksheet_set_column(sheet, static_cast<lxw_col_t>(c), static_cast<lxw_col_t>(c), width, nullptr);
    }

    const auto writeValue = [&](lxw_row_t r, int c, const QVariant &value, lxw_format *format, lxw_format *numberFmt) {
        if (value.isNull())
            return;
        const auto col = static_cast<lxw_col_t>(c);
        const ExportColumn &column = table.columns.at(c);
        switch (column.kind) {
        case ExportColumn::Kind::Number: {
            bool ok = false;
            const double number = value.toDouble(&ok);
            if (ok) {
                worksheet_write_number(sheet, r, col, number, numberFmt);
                return;
            }
            break;
        }
        case ExportColumn::Kind::Date: {
            const QDate date = dateOfValue(value);
            if (date.isValid()) {
                lxw_datetime when{date.year(), static_cast<uint8_t>(date.month()), static_cast<uint8_t>(date.day()), 0, 0, 0};
                worksheet_write_datetime(sheet, r, col, &when, dateFormat);
                return;
            }
            break;
        }
        case ExportColumn::Kind::YesNo:
            worksheet_write_string(sheet, r, col, yesNo(value).toUtf8().constData(), format);
            return;
        case ExportColumn::Kind::Text:
            break;
        }
        worksheet_write_string(sheet, r, col, value.toString().toUtf8().constData(), format);
    };

    lxw_row_t r = 0;
    for (const QString &line : table.titleLines)
        worksheet_write_string(sheet, r++, 0, line.toUtf8().constData(), bold);
    if (!table.titleLines.isEmpty())
        ++r;
    const lxw_row_t headerRow = r;
    for (int c = 0; c < table.columns.size(); ++c)
        worksheet_write_string(sheet, r, static_cast<lxw_col_t>(c), table.columns.at(c).caption.toUtf8().constData(), bold);
    ++r;
    for (int row = 0; row < table.rowCount; ++row, ++r) {
        for (int c = 0; c < table.columns.size(); ++c)
            writeValue(r, c, table.cell(row, c), nullptr, numberFormats.at(c));
    }
    if (!table.totals.isEmpty()) {
        for (int c = 0; c < table.columns.size(); ++c) {
            const QVariant value = table.totals.value(c);
            if (c == 0 && value.isNull())
                worksheet_write_string(sheet, r, 0, table.totalsCaption.toUtf8().constData(), bold);
            else
                writeValue(r, c, value, bold, totalFormats.at(c));
        }
        ++r;
    }
    for (const QString &line : table.noteLines)
        worksheet_write_string(sheet, r++, 0, line.toUtf8().constData(), nullptr);
    worksheet_freeze_panes(sheet, headerRow + 1, 0);
    for (qsizetype i = 0; i < table.pictures.size(); ++i) {
        const auto &[title, png] = table.pictures.at(i);
        const QByteArray name = (i == 0 ? QStringLiteral("Графика") : QStringLiteral("Графика %1").arg(i + 1)).toUtf8();
        lxw_worksheet *pictureSheet = workbook_add_worksheet(workbook, name.constData());
        worksheet_write_string(pictureSheet, 0, 0, title.toUtf8().constData(), bold);
        worksheet_insert_image_buffer(pictureSheet, 2, 0, reinterpret_cast<const unsigned char *>(png.constData()),
                                      static_cast<size_t>(png.size()));
    }

    const lxw_error error = workbook_close(workbook);
    if (error != LXW_NO_ERROR) {
        QFile::remove(partial);
        return exportError(QStringLiteral("Файлът %1 не може да се запише: %2")
                               .arg(fileName, QString::fromUtf8(lxw_strerror(error))));
    }
    QFile::remove(fileName);
    if (!QFile::rename(partial, fileName)) {
        QFile::remove(partial);
        return exportError(QStringLiteral("Файлът %1 не може да се запише.").arg(fileName));
    }
    return std::nullopt;
}

std::optional<UserMessage> writeTable(const ExportTable &table, const QString &fileName)
{
    return fileName.endsWith(QLatin1String(".xlsx"), Qt::CaseInsensitive) ? writeXlsx(table, fileName)
                                                                          : writeCsv(table, fileName);
}

QString exportFileName(const QString &subject)
{
    static const QRegularExpression refused(QStringLiteral("[\\\\/:*?\"<>|\\x00-\\x1f]"));
    QString name = subject;
    name.replace(refused, QStringLiteral("-"));
    name = name.simplified();
    return name.isEmpty() ? QStringLiteral("Справка") : name;
}

}
