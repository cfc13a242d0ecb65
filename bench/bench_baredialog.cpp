// A minimal Qt program for bench_startup to race: a dialog shown, its name written when it shows,
// then closed. It links Qt Widgets alone.
#include <QApplication>
#include <QDialog>
#include <QTimer>
#include <cstdio>

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QDialog dialog;
    dialog.show();
    std::printf("QDialog: \n");
    std::fflush(stdout);
    QTimer::singleShot(0, &dialog, &QDialog::reject);
    return dialog.exec();
}
