// view_store.h -- the runs that a page looks at: their records and rows, kept up to date by a thread of their own.
#pragma once
#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tnl/results/measure.h"
#include "tnl/results/open_run.h"
#include "tnl/view/view_source.h"

namespace cli {

struct view_file {
    record_file record;
    std::filesystem::path path;
    std::atomic<bool> wanted = false;  // its rows were asked for; of others the first lines are read only
    std::mutex lock;                   // of all else here; never held while the reader takes a text apart
    row_source source;
    std::vector<expression> made;          // columns behind those of the file
    std::vector<std::string> made_units;   // [made]
    std::vector<std::string> made_faults;  // [made] why a column holds no values; empty: it does
};
using view_file_ptr = std::shared_ptr<view_file>;

struct view_run {
    std::string path;  // as the user gave it
    std::string name;  // short, different from the others'
    opened_run opened;
    std::string problem;               // why the record cannot be read at present; empty: it can
    std::vector<view_file_ptr> files;  // tables only
};

class view_store {
public:
    // Throws file_error for a run that cannot be opened. Only row files inside the run's folder are followed.
    explicit view_store(const std::vector<std::string>& paths);
    ~view_store();
    view_store(const view_store&) = delete;
    view_store& operator=(const view_store&) = delete;

    std::string list();  // of runs, files and columns as JSON; makes the reader look for changes
    // nullptr if there is none. The file's rows are read from then on.
    view_file_ptr want_file(std::size_t run, const std::string& path);
    // A column that is made of others row by row, "vin - vout", for every file that has these. Throws usage_error for a
    // text that is no such expression, or that no file has the columns for.
    void add_column(const std::string& text);
    void wait_until_read();  // returns when there is nothing left to read for now

private:
    void follow();
    bool read_on(view_file& file);  // one chunk; says whether there is more
    void look_for_changes();

    std::mutex lock_;  // of what is below
    std::condition_variable changed_;
    std::vector<view_run> runs_;
    bool asked_ = true, idle_ = false, ending_ = false;
    std::thread reader_;  // last: it uses the others
};

}  // namespace cli
