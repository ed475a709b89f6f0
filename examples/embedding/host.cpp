// A window that has tkvDvdMenuImg draw a menu: a preview after every change of the title, then the
// frames. A bar shows how far they are, and a button stops them.
//
//   c++ -std=c++20 examples/embedding/host.cpp -o host $(pkg-config --cflags --libs gtk+-3.0)
//   ./host TOOL FOLDER BACKGROUND THUMBNAIL...    # absolute paths; FOLDER is there
#include <gtk/gtk.h>

#include <csignal>
#include <string>

namespace {

struct Host {
    std::string tool, folder, background, thumbnails, captions;
    GtkWidget *title = nullptr, *picture = nullptr, *bar = nullptr, *stop = nullptr,
              *words = nullptr;
    GSubprocess* run = nullptr;  // one at a time
    bool isPreview = false;
    bool isChanged = false;  // since the run began: start again when it has ended
};

void start(Host& host, bool isPreview);

void show(Host& host, const std::string& words) {
    gtk_label_set_text(GTK_LABEL(host.words), words.c_str());
    gtk_widget_set_sensitive(host.stop, host.run != nullptr);
}

// The run has exited, and its lines are read to the end.
void end(Host& host) {
    const bool isWell =
        g_subprocess_get_if_exited(host.run) && g_subprocess_get_exit_status(host.run) == 0;
    g_clear_object(&host.run);
    if (host.isChanged) return start(host, true);
    if (!isWell) return show(host, "not made");
    if (!host.isPreview) return show(host, "749 frames in " + host.folder + "/frames");
    gtk_image_set_from_file(GTK_IMAGE(host.picture), (host.folder + "/preview.jpg").c_str());
    start(host, false);
}

void readLine(GObject* source, GAsyncResult* result, gpointer data) {
    auto& host = *static_cast<Host*>(data);
    auto* lines = G_DATA_INPUT_STREAM(source);
    char* line = g_data_input_stream_read_line_finish(lines, result, nullptr, nullptr);
    if (line == nullptr) {
        g_subprocess_wait_async(
            host.run, nullptr,
            [](GObject*, GAsyncResult*, gpointer data) { end(*static_cast<Host*>(data)); }, data);
        return;
    }
    constexpr const char* kProgress = "pourcentage    : ";
    if (g_str_has_prefix(line, kProgress) && !host.isPreview) {
        // Not strtod, which expects the locale's decimal separator.
        const double percent =
            g_ascii_strtod(line + std::char_traits<char>::length(kProgress), nullptr);
        gtk_progress_bar_set_fraction(GTK_PROGRESS_BAR(host.bar), percent / 100);
    }
    // A message for people.
    if (g_str_has_prefix(line, "tkvDvdMenuImg: ")) g_printerr("%s\n", line);
    g_free(line);
    g_data_input_stream_read_line_async(lines, G_PRIORITY_DEFAULT, nullptr, readLine, data);
}

void start(Host& host, bool isPreview) {
    host.isPreview = isPreview;
    host.isChanged = false;
    const std::string output = host.folder + (isPreview ? "/preview.jpg" : "/frames");
    // An argument vector, no shell: nothing in a title or a path needs quotes.
    const char* title = gtk_entry_get_text(GTK_ENTRY(host.title));
    host.run = g_subprocess_new(G_SUBPROCESS_FLAGS_STDERR_PIPE, nullptr, host.tool.c_str(), "-mode",
                                isPreview ? "-1" : "0", "-isMainMenu", "1", "-title", title, "-bkg",
                                host.background.c_str(), "-thumbs", host.thumbnails.c_str(),
                                "-captions", host.captions.c_str(), "-o", output.c_str(), nullptr);
    if (host.run == nullptr) return show(host, host.tool + " cannot be started");
    gtk_progress_bar_set_fraction(GTK_PROGRESS_BAR(host.bar), 0);
    GDataInputStream* lines = g_data_input_stream_new(g_subprocess_get_stderr_pipe(host.run));
    g_data_input_stream_read_line_async(lines, G_PRIORITY_DEFAULT, nullptr, readLine, &host);
    g_object_unref(lines);  // The pending read holds a reference.
    show(host, isPreview ? "a preview" : "the frames");
}

// Stops the current run; the next one starts when it has exited, so that no two write the same
// files.
void change(GtkWidget*, gpointer data) {
    auto& host = *static_cast<Host*>(data);
    if (host.run == nullptr) return start(host, true);
    host.isChanged = true;
    g_subprocess_send_signal(host.run, SIGTERM);
}

void stop(GtkWidget*, gpointer data) {
    auto& host = *static_cast<Host*>(data);
    host.isChanged = false;
    if (host.run != nullptr) g_subprocess_send_signal(host.run, SIGTERM);
}

}  // namespace

int main(int argc, char** argv) {
    gtk_init(&argc, &argv);
    if (argc < 5) return 2;
    Host host;
    host.tool = argv[1];
    host.folder = argv[2];
    host.background = argv[3];
    for (int i = 4; i < argc; ++i) {
        const std::string joint = i > 4 ? "totoCestLePlusBeau" : "";
        host.thumbnails += joint + argv[i];
        host.captions += joint + "film " + std::to_string(i - 3);
    }
    GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 6);
    gtk_container_add(GTK_CONTAINER(window), box);
    for (GtkWidget* widget : {host.title = gtk_entry_new(), host.picture = gtk_image_new(),
                             host.bar = gtk_progress_bar_new(), host.words = gtk_label_new(""),
                             host.stop = gtk_button_new_with_label("Stop")})
        gtk_container_add(GTK_CONTAINER(box), widget);
    gtk_entry_set_text(GTK_ENTRY(host.title), "Our summer");
    g_signal_connect(host.title, "changed", G_CALLBACK(change), &host);
    g_signal_connect(host.stop, "clicked", G_CALLBACK(stop), &host);
    g_signal_connect(window, "destroy", G_CALLBACK(gtk_main_quit), nullptr);
    gtk_widget_show_all(window);
    change(nullptr, &host);
    gtk_main();
    stop(nullptr, &host);
}
