#include <gtest/gtest.h>
#include <gtk/gtk.h>

// GTK needs a display; without one every test that needs it skips and says so.
int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    gtk_init_check(&argc, &argv);
    return RUN_ALL_TESTS();
}
