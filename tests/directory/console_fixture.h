#pragma once

#include "directory/frm_admin.h"
#include "fixtures.h"
#include "logon/command_line.h"
#include "platform/engine/engine.h"

#include <memory>

// The console on the demo installation, beside a connection of the test's own to the same file.
class ConsoleFixture : public testing_support::DemoTest {
protected:
    void SetUp() override {
        DemoTest::SetUp();
        db = engine::openDatabase(demoDatabase());
    }
    void TearDown() override {
        console.hide();
        db->close();
        DemoTest::TearDown();
    }
    // The administrator logs on from the command line, which fills the console.
    void logOn() {
        SetCommandLine("-ladmin -porvane");
        console.Form_Activate();
    }

    std::unique_ptr<engine::Database> db;
    frmAdmin console;
};
