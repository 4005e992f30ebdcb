// ctest-label: threads
#include "messageloggerinterface.h"
#include "tassert.h"
#include "testfixture.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QTest>
#include <QTextDocument>
#include <QThread>

#include <thread>
#include <vector>

namespace {

// Swallows the log's echo to the Qt message handler while many messages are
// written, so that a failure report stays readable.
class QuietMessages
{
public:
    QuietMessages() { m_previous = qInstallMessageHandler(&QuietMessages::drop); }
    ~QuietMessages() { qInstallMessageHandler(m_previous); }

private:
    static void drop(QtMsgType, const QMessageLogContext&, const QString&) {}
    QtMessageHandler m_previous = nullptr;
};

} // namespace

class TestMessageLoggerInterface : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void levelsAndTextsKeptInOrder();
    void loggingFromSeveralThreads();
    void listenersOnTheGuiThreadReceiveQueued();
    void assertionReportsAndReturns_data();
    void assertionReportsAndReturns();
    void escapedNameStaysLiteralInRichText();
};

void TestMessageLoggerInterface::initTestCase()
{
    kaInitTestEnvironment();
}

void TestMessageLoggerInterface::init()
{
    MessageLoggerInterface::returnMe()->clear();
}

void TestMessageLoggerInterface::levelsAndTextsKeptInOrder()
{
    QuietMessages quiet;
    MessageLoggerInterface::Information(QStringLiteral("first"), nullptr);
    MessageLoggerInterface::Error(QStringLiteral("second"));
    MessageLoggerInterface::Warning(QStringLiteral("third"));
    MessageLoggerInterface::Error(QStringLiteral("Données « quatre »"), MessageLoggerInterface::returnMe());

    const QList<MessageLoggerInterface::Entry> entries = MessageLoggerInterface::returnMe()->entries();
    QCOMPARE(entries.size(), 4);
    const QList<MessageLoggerInterface::Level> levels{
        MessageLoggerInterface::LevelInformation, MessageLoggerInterface::LevelError,
        MessageLoggerInterface::LevelWarning, MessageLoggerInterface::LevelError};
    const QStringList texts{"first", "second", "third", QStringLiteral("Données « quatre »")};
    for (int i = 0; i < entries.size(); ++i) {
        QCOMPARE(entries[i].level, levels[i]);
        QCOMPARE(entries[i].text, texts[i]);
        QVERIFY(entries[i].time.isValid());
        QCOMPARE(entries[i].time.timeSpec(), Qt::LocalTime);
        QVERIFY(qAbs(entries[i].time.secsTo(QDateTime::currentDateTime())) < 600);
        if (i > 0)
            QVERIFY(entries[i - 1].time <= entries[i].time);
    }
    QCOMPARE(MessageLoggerInterface::returnMe()->texts(), texts);
}

void TestMessageLoggerInterface::loggingFromSeveralThreads()
{
    const int threadCount = 6;
    const int perThread = 400;
    QuietMessages quiet;
    // Plain threads: their join is a synchronisation the thread sanitizer
    // sees, unlike QThread::wait() inside an uninstrumented Qt.
    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < perThread; ++i) {
                const QString text = QStringLiteral("t%1 m%2").arg(t).arg(i);
                switch (i % 3) {
                case 0: MessageLoggerInterface::Error(text); break;
                case 1: MessageLoggerInterface::Warning(text); break;
                default: MessageLoggerInterface::Information(text); break;
                }
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    // Every message is there once, and each thread's messages keep their
    // order and level.
    const QList<MessageLoggerInterface::Entry> entries = MessageLoggerInterface::returnMe()->entries();
    QCOMPARE(entries.size(), threadCount * perThread);
    QVector<int> nextExpected(threadCount, 0);
    static const QRegularExpression pattern(QStringLiteral("^t(\\d+) m(\\d+)$"));
    for (const MessageLoggerInterface::Entry& e : entries) {
        const QRegularExpressionMatch m = pattern.match(e.text);
        QVERIFY2(m.hasMatch(), qPrintable(e.text));
        const int t = m.captured(1).toInt();
        const int i = m.captured(2).toInt();
        QCOMPARE(i, nextExpected[t]);
        ++nextExpected[t];
        QCOMPARE(int(e.level), i % 3);
    }
}

void TestMessageLoggerInterface::listenersOnTheGuiThreadReceiveQueued()
{
    QuietMessages quiet;
    QObject receiver;
    QStringList received;
    QVector<QThread*> receivingThreads;
    connect(MessageLoggerInterface::returnMe(), &MessageLoggerInterface::messageLogged, &receiver,
            [&](int level, const QString& text) {
                Q_UNUSED(level);
                received << text;
                receivingThreads << QThread::currentThread();
            });

    std::thread worker([] {
        for (int i = 0; i < 50; ++i)
            MessageLoggerInterface::Warning(QStringLiteral("from worker %1").arg(i));
    });
    worker.join();
    QTRY_COMPARE(received.size(), 50);
    QCOMPARE(received.first(), QStringLiteral("from worker 0"));
    QCOMPARE(received.last(), QStringLiteral("from worker 49"));
    for (QThread* thread : receivingThreads)
        QCOMPARE(thread, QThread::currentThread());
}

void TestMessageLoggerInterface::assertionReportsAndReturns_data()
{
    QTest::addColumn<QByteArray>("expression");
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<int>("line");
    QTest::addColumn<bool>("flag");

    QTest::newRow("tree iterator")
        << QByteArray("false") << QByteArray("libraries\\internal\\core\\include\\ttreeiterator") << 36 << false;
    QTest::newRow("condition text, flag set")
        << QByteArray("node != nullptr") << QByteArray("libraries\\internal\\platform\\browser\\src\\x") << 1234
        << true;
}

void TestMessageLoggerInterface::assertionReportsAndReturns()
{
    QFETCH(QByteArray, expression);
    QFETCH(QByteArray, file);
    QFETCH(int, line);
    QFETCH(bool, flag);

    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("Assertion failed")));
    // Reaching the next line at all is the point: the assertion never aborts.
    const bool result = t_assert(expression.constData(), file.constData(), line, flag);
    QVERIFY(!result);

    const QList<MessageLoggerInterface::Entry> entries = MessageLoggerInterface::returnMe()->entries();
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries.first().level, MessageLoggerInterface::LevelError);
    const QString text = entries.first().text;
    QVERIFY2(text.contains(QString::fromLatin1(expression)), qPrintable(text));
    QVERIFY2(text.contains(QString::fromLatin1(file)), qPrintable(text));
    QVERIFY2(text.contains(QString::number(line)), qPrintable(text));
}

void TestMessageLoggerInterface::escapedNameStaysLiteralInRichText()
{
    QuietMessages quiet;
    const QString name = QStringLiteral("<b>x</b> & co");
    MessageLoggerInterface::Information(QStringLiteral("Project <i>%1</i> opened").arg(name.toHtmlEscaped()));

    // The log keeps the text as given; shown as rich text, the name reads as
    // typed and does not turn into markup.
    const QString logged = MessageLoggerInterface::returnMe()->texts().value(0);
    QCOMPARE(logged, QStringLiteral("Project <i>&lt;b&gt;x&lt;/b&gt; &amp; co</i> opened"));
    QTextDocument shown;
    shown.setHtml(logged);
    QCOMPARE(shown.toPlainText(), QStringLiteral("Project <b>x</b> & co opened"));
}

QTEST_MAIN(TestMessageLoggerInterface)
#include "tst_messageloggerinterface.moc"
