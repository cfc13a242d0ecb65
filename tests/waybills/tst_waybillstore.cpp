#include <QtTest>
class T : public QObject { Q_OBJECT };
QTEST_APPLESS_MAIN(T)
#include "tst_waybillstore.moc"
