// ctest-label: threads
#include "messageloggerinterface.h"
#include "tassert.h"
#include "testfixture.h"

#include <QScopeGuard>
#include <QTest>
#include <QThread>

#include <thread>
#include <vector>

class TestMessageLoggerInterface : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init() { MessageLoggerInterface::returnMe()->clear(); }
    void loggingFromSeveralThreads();
    void assertionReportsAndReturns();
};

// Pool threads log at once while the host's log window listens.
void TestMessageLoggerInterface::loggingFromSeveralThreads()
{
    const int threadCount = 6, perThread = 400;
    // Swallows the echo to the Qt log, so that a failure report stays readable.
    const QtMessageHandler previous =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const auto restore = qScopeGuard([previous] { qInstallMessageHandler(previous); });
    QObject receiver;
    int received = 0, onGuiThread = 0;
    connect(MessageLoggerInterface::returnMe(), &MessageLoggerInterface::messageLogged, &receiver, [&] {
        ++received;
        onGuiThread += QThread::currentThread() == thread();
    });
    MessageLoggerInterface::Information(QStringLiteral("Données « zéro »"), MessageLoggerInterface::returnMe());
    // Plain threads: their join is a synchronisation the thread sanitizer
    // sees, unlike QThread::wait() inside an uninstrumented Qt.
    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t)
        threads.emplace_back([t] {
            using Log = void (*)(const QString&, MessageLoggerInterface*);
            const Log byLevel[] = {&MessageLoggerInterface::Error, &MessageLoggerInterface::Warning,
                                   &MessageLoggerInterface::Information};
            for (int i = 0; i < perThread; ++i)
                byLevel[i % 3](QString::number(t * perThread + i), nullptr);
        });
    for (std::thread& thread : threads)
        thread.join();
    // Every message is there once, with its local time, and each thread's
    // messages keep their order and level; non-Latin text is kept as given.
    QList<MessageLoggerInterface::Entry> entries = MessageLoggerInterface::returnMe()->entries();
    QCOMPARE(entries.size(), threadCount * perThread + 1);
    const MessageLoggerInterface::Entry first = entries.takeFirst();
    QCOMPARE(first.level, MessageLoggerInterface::LevelInformation);
    QCOMPARE(first.text, QStringLiteral("Données « zéro »"));
    QCOMPARE(first.time.timeSpec(), Qt::LocalTime);
    QVERIFY(qAbs(first.time.secsTo(QDateTime::currentDateTime())) < 600);
    QVector<int> nextExpected(threadCount, 0);
    for (const MessageLoggerInterface::Entry& e : entries) {
        const int n = e.text.toInt(), i = n % perThread;
        QCOMPARE(i, nextExpected[n / perThread]++);
        QCOMPARE(int(e.level), i % 3);
        QVERIFY(first.time <= e.time);
    }
    // The listener got every message, queued to its own thread.
    QTRY_COMPARE(received, threadCount * perThread + 1);
    QCOMPARE(onGuiThread, received);
}

void TestMessageLoggerInterface::assertionReportsAndReturns()
{
    const QString report = QStringLiteral(
        "Assertion failed: \"node != nullptr\" in libraries\\internal\\core\\include\\ttreeiterator at line 1234");
    QTest::ignoreMessage(QtWarningMsg, qPrintable(QStringLiteral("Error: ") + report)); // echoed to the Qt log
    // Reaching the next line at all is the point: the assertion never aborts.
    QVERIFY(!t_assert("node != nullptr", "libraries\\internal\\core\\include\\ttreeiterator", 1234, true));
    const QList<MessageLoggerInterface::Entry> entries = MessageLoggerInterface::returnMe()->entries();
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries.first().level, MessageLoggerInterface::LevelError);
    QCOMPARE(entries.first().text, report);
}

QTEST_MAIN(TestMessageLoggerInterface)
#include "tst_messageloggerinterface.moc"
