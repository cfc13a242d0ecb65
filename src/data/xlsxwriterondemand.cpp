// The calls of libxlsxwriter that the export to Excel makes, found in the library when first made
// instead of linked: linking it would load it, minizip and OpenSSL's libcrypto at every start of the
// program, before the sign-in. Hidden, as in libpqondemand.cpp.
#pragma GCC visibility push(hidden)
#include <xlsxwriter.h>
#pragma GCC visibility pop

#include "data/ondemandlibrary.h"

#define ZAREK_XLSXWRITER_CALL(...) ZAREK_ON_DEMAND("libxlsxwriter.so.4", __VA_ARGS__)

ZAREK_XLSXWRITER_CALL(lxw_workbook *, workbook_new_opt, (const char *filename, lxw_workbook_options *options),
                      (filename, options))
ZAREK_XLSXWRITER_CALL(lxw_worksheet *, workbook_add_worksheet, (lxw_workbook * workbook, const char *name),
                      (workbook, name))
ZAREK_XLSXWRITER_CALL(lxw_format *, workbook_add_format, (lxw_workbook * workbook), (workbook))
ZAREK_XLSXWRITER_CALL(lxw_error, workbook_close, (lxw_workbook * workbook), (workbook))
ZAREK_XLSXWRITER_CALL(void, format_set_bold, (lxw_format * format), (format))
ZAREK_XLSXWRITER_CALL(void, format_set_num_format, (lxw_format * format, const char *text), (format, text))
ZAREK_XLSXWRITER_CALL(char *, lxw_strerror, (lxw_error error), (error))
ZAREK_XLSXWRITER_CALL(void, worksheet_freeze_panes, (lxw_worksheet * sheet, lxw_row_t row, lxw_col_t column),
                      (sheet, row, column))
ZAREK_XLSXWRITER_CALL(lxw_error, worksheet_set_column,
                      (lxw_worksheet * sheet, lxw_col_t first, lxw_col_t last, double width, lxw_format *format),
                      (sheet, first, last, width, format))
ZAREK_XLSXWRITER_CALL(lxw_error, worksheet_write_string,
                      (lxw_worksheet * sheet, lxw_row_t row, lxw_col_t column, const char *text, lxw_format *format),
                      (sheet, row, column, text, format))
ZAREK_XLSXWRITER_CALL(lxw_error, worksheet_write_number,
                      (lxw_worksheet * sheet, lxw_row_t row, lxw_col_t column, double number, lxw_format *format),
                      (sheet, row, column, number, format))
ZAREK_XLSXWRITER_CALL(lxw_error, worksheet_write_datetime,
                      (lxw_worksheet * sheet, lxw_row_t row, lxw_col_t column, lxw_datetime *datetime,
                       lxw_format *format),
                      (sheet, row, column, datetime, format))
ZAREK_XLSXWRITER_CALL(lxw_error, worksheet_insert_image_buffer,
                      (lxw_worksheet * sheet, lxw_row_t row, lxw_col_t column, const unsigned char *buffer,
                       size_t size),
                      (sheet, row, column, buffer, size))
