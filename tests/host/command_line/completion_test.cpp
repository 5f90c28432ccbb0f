#include "host/command_line/completion.h"

#include "tests/support/qt_literals.h"

#include <QProcess>
#include <QStringList>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace test_support::literals;

/// What a shell offers, asked in a real one.
class Completion : public testing::Test {
protected:
    Completion() {
        app.name("kelvro-host");
        app.add_option("--plugin", text)->type_name("FILE");
        auto* const values = app.add_subcommand("values");
        values->add_option("--obis", text);
        values->add_option("--form", text)->type_name("svg|png");
        values->add_option("--hidden", text)->group("");
        app.add_subcommand("ingest")->add_option("INPUT", text)->type_name("FILE");
        app.add_subcommand("state")->add_subcommand("show");
    }

    /// `words` with the word at the cursor last.
    std::vector<std::string> offered(const QStringList& words) const {
        const QString script = QString::fromStdString(host::bashCompletion(app)) +
                               "COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); _kelvro_host; "
                               "printf '%s\\n' \"${COMPREPLY[@]}\""_q;
        QProcess bash;
        bash.setWorkingDirectory(QStringLiteral(KELVRO_HOST_DATA_DIR));
        bash.start("bash"_q, QStringList{"-c"_q, script, "bash"_q} + words);
        EXPECT_TRUE(bash.waitForFinished());
        EXPECT_EQ(bash.readAllStandardError().toStdString(), "");
        std::vector<std::string> lines;
        for (const auto& line :
             QString::fromUtf8(bash.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts)) {
            lines.push_back(line.toStdString());
        }
        return lines;
    }

    CLI::App app;
    std::string text;
};

TEST_F(Completion, OffersCommands) {
    EXPECT_THAT(offered({"kelvro-host"_q, "va"_q}), ElementsAre("values"));
}

TEST_F(Completion, OffersTheOptionsOfTheCommandThatIsTyped) {
    EXPECT_THAT(offered({"kelvro-host"_q, "values"_q, "--"_q}),
                ElementsAre("--help", "--obis", "--form"));
}

TEST_F(Completion, OffersTheCommandsBehindAWord) {
    EXPECT_THAT(offered({"kelvro-host"_q, "state"_q, "sh"_q}), ElementsAre("show"));
}

TEST_F(Completion, OffersFilesForAnOptionThatTakesOne) {
    EXPECT_THAT(offered({"kelvro-host"_q, "--plugin"_q, "radio"_q}),
                ElementsAre("radio_telegrams.ndjson"));
}

TEST_F(Completion, OffersFilesForAnArgumentThatIsOne) {
    EXPECT_THAT(offered({"kelvro-host"_q, "ingest"_q, "radio"_q}),
                ElementsAre("radio_telegrams.ndjson"));
}

TEST_F(Completion, OffersTheWordsThatAnOptionTakes) {
    EXPECT_THAT(offered({"kelvro-host"_q, "values"_q, "--form"_q, ""_q}),
                ElementsAre("svg", "png"));
}

TEST_F(Completion, OffersNothingForAValueThatItCannotKnow) {
    EXPECT_THAT(offered({"kelvro-host"_q, "values"_q, "--obis"_q, ""_q}), IsEmpty());
}

} // namespace
