#include "host/command_line/command_line.h"

#include "host/command_line/manual.h"
#include "host/commands/commands.h"
#include "tests/support/qt_literals.h"

#include <QProcess>
#include <gtest/gtest.h>

#include <array>

namespace {

using host::ExitStatus;
using namespace test_support::literals;

class CommandLine : public testing::Test {
protected:
    CommandLine() {
        auto& state = line.addGroup("state", "Driver states");
        auto& show = line.add(state,
                              {.name = "show",
                               .description = "Shows a device's state",
                               .examples = "kelvro-host state show 1001\nkelvro-host state show 7"},
                              [this](host::Session& session) {
                                  form = session.options().form;
                                  return ExitStatus::Failed;
                              });
        line.addOutputOptions(show);
    }

    template <class... Words>
    std::optional<ExitStatus> parse(const Words*... words) {
        const std::array<const char*, sizeof...(words) + 1> arguments{"kelvro-host", words...};
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const auto status = line.parse(static_cast<int>(arguments.size()), arguments.data());
        output = testing::internal::GetCapturedStdout();
        errors = testing::internal::GetCapturedStderr();
        return status;
    }

    host::CommandLine line;
    std::optional<host::OutputForm> form;
    std::string output;
    std::string errors;
};

TEST_F(CommandLine, RunsTheChosenCommandAndGivesItsStatus) {
    EXPECT_EQ(parse("state", "show", "--csv"), std::nullopt);
    EXPECT_EQ(line.run(), ExitStatus::Failed);
    EXPECT_EQ(form, host::OutputForm::Csv);
}

TEST_F(CommandLine, RefusesTwoFormsAtOnce) {
    EXPECT_EQ(parse("state", "show", "--csv", "--json"), ExitStatus::WronglyCalled);
}

TEST_F(CommandLine, SaysWhatWasNotExpected) {
    EXPECT_EQ(parse("state", "show", "--jsno"), ExitStatus::WronglyCalled);
    EXPECT_NE(errors.find("--jsno"), std::string::npos);
    EXPECT_EQ(output, "");
}

TEST_F(CommandLine, WantsACommand) {
    EXPECT_EQ(parse(), ExitStatus::WronglyCalled);
    EXPECT_EQ(parse("state"), ExitStatus::WronglyCalled);
}

TEST_F(CommandLine, PrintsHelpWithTheExamples) {
    EXPECT_EQ(parse("state", "show", "--help"), ExitStatus::Done);
    EXPECT_NE(output.find("kelvro-host state show 1001"), std::string::npos);
    EXPECT_NE(output.find("--settings"), std::string::npos);
}

TEST_F(CommandLine, PrintsItsVersion) {
    EXPECT_EQ(parse("--version"), ExitStatus::Done);
    EXPECT_EQ(output, host::programVersion().toStdString() + '\n');
}

QString manualOfAll() {
    host::CommandLine line;
    host::addCommands(line);
    return QString::fromStdString(
        host::manualPage(line.app(), {.version = "1.2.3",
                                      .purpose = "store what meters say",
                                      .sections = host::settingsSections()}));
}

/// What mandoc makes of the page: `arguments` say what.
QString mandoc(const QStringList& arguments, const QString& page) {
    QProcess program;
    program.start("mandoc"_q, arguments);
    program.write(page.toUtf8());
    program.closeWriteChannel();
    EXPECT_TRUE(program.waitForFinished());
    return QString::fromUtf8(program.readAllStandardOutput() + program.readAllStandardError());
}

TEST(Manual, IsAcceptedByALint) {
    const auto findings = mandoc({"-T"_q, "lint"_q, "-W"_q, "warning"_q}, manualOfAll());
    for (const auto& finding : findings.split(u'\n', Qt::SkipEmptyParts)) {
        // A date would change with every build.
        EXPECT_TRUE(finding.contains("missing date"_q)) << finding.toStdString();
    }
}

TEST(Manual, TellsOfEveryCommandWithItsOptionsAndExamples) {
    const auto text = mandoc({"-T"_q, "ascii"_q, "-O"_q, "width=200"_q}, manualOfAll())
                          .remove(QRegularExpression(".\b"_q));
    host::CommandLine line;
    host::addCommands(line);
    const std::function<void(const CLI::App&)> look = [&](const CLI::App& app) {
        for (const auto* command : app.get_subcommands([](const CLI::App*) { return true; })) {
            const auto name = QString::fromStdString(command->get_name());
            EXPECT_TRUE(text.contains(name)) << command->get_name();
            for (const auto* option : command->get_options()) {
                EXPECT_TRUE(text.contains(QString::fromStdString(option->get_name(true))))
                    << command->get_name() << ' ' << option->get_name(true);
            }
            look(*command);
        }
    };
    look(line.app());
    EXPECT_TRUE(text.contains("kelvro-host plot --device 1001"_q));
    EXPECT_TRUE(text.contains("1.2.3"_q));
    EXPECT_TRUE(text.contains("kelvro-host - store what meters say\n"_q));
    EXPECT_TRUE(text.contains("ENVIRONMENT\n       KELVRO_SETTINGS\n"_q));
}

/// As it is read.
QString pageOf(const CLI::App& app) {
    const auto page = host::manualPage(
        app, {.version = "1",
              .purpose = "try things",
              .sections = {{.title = "EXIT STATUS", .entries = {{"0", "All is well"}}}}});
    return mandoc({"-T"_q, "ascii"_q}, QString::fromStdString(page))
        .remove(QRegularExpression(".\b"_q));
}

TEST(Manual, ShowsDashesAndDotsAsTheyAre) {
    CLI::App app("Does a - b.", "tool");
    app.add_subcommand("go", ".hidden files \\too");
    const auto text = pageOf(app);
    EXPECT_TRUE(text.contains("Does a - b."_q));
    EXPECT_TRUE(text.contains(".hidden files \\too"_q));
}

TEST(Manual, TellsOfAProgramWithoutCommandsByItsOptions) {
    CLI::App app("Does it.", "tool");
    app.add_flag("--quick", "Do it soon");
    app.add_flag("--task", "What only the program itself says")->group("");
    app.footer("It may take long.\n\nExample:\ntool --quick\n-\n\nThat is all.");
    const auto text = pageOf(app);
    EXPECT_TRUE(text.contains("       tool [OPTION...]\n"_q)) << text.toStdString();
    EXPECT_TRUE(text.contains("       It may take long.\n\n       Example:\n\n"
                              "       tool --quick\n       -\n\n       That is all.\n"_q))
        << text.toStdString();
    EXPECT_TRUE(text.contains("       --quick\n              Do it soon.\n"_q))
        << text.toStdString();
    EXPECT_TRUE(text.contains("EXIT STATUS\n       0      All is well.\n"_q)) << text.toStdString();
    EXPECT_FALSE(text.contains("--task"_q));
    EXPECT_FALSE(text.contains("COMMAND"_q));
}

} // namespace
