// One row a script step, in the order of registration, with the parameters that the host shows.
#include "src/archive/zip_functions.h"
#include "src/files/commands/shell.h"
#include "src/files/contents/contents_dialog.h"
#include "src/files/contents/edit_contents.h"
#include "src/files/contents/write_contents.h"
#include "src/files/desktop/aliases.h"
#include "src/files/desktop/launching.h"
#include "src/files/desktop/select_dialogs.h"
#include "src/files/disks/disks.h"
#include "src/files/information/attributes.h"
#include "src/files/information/file_times.h"
#include "src/files/information/mac_properties.h"
#include "src/files/tree/folder_operations.h"
#include "src/files/tree/tree.h"
#include "src/metadata/set_metadata.h"
#include "src/pictures/create_thumbnail.h"
#include "src/plugin/vocabulary/own_functions.h"
#include "src/plugin/vocabulary/registry.h"

#include <algorithm>

namespace vell::plugin {
namespace {

constexpr ListItem encoding_items[] = {
    {0, "Platform native"}, {1, "UTF-8"},     {2, "ASCII DOS"},
    {3, "ASCII Windows"},   {4, "ASCII Mac"}, {5, "ISO-8859-1 (Windows Latin-1)"},
    {4200, "Bytes Only"},
};
constexpr std::uint8_t native_encoding = 0; // indexes of the items
constexpr std::uint8_t utf8_encoding = 1;

constexpr ListItem line_ending_items[] = {{0, "Don't change"}, {1, "CR to CRLF (Windows)"}};
constexpr ListItem control_items[] = {{control_disable_all, "Disable all functions"},
                                      {control_enable_all, "Enable all functions"},
                                      {control_current_status, "Get current status"}};
constexpr ListItem create_folder_items[] = {{0, "Don't create missing folders"},
                                            {1, "Create missing folders"}};
constexpr ListItem lock_items[] = {{0, "Don't change"}, {1, "Unlock"}, {2, "Lock"}};
constexpr ListItem visibility_items[] = {{0, "Don't change"}, {1, "Show"}, {2, "Hide"}};
constexpr ListItem archive_items[] = {{0, "Don't change"}, {1, "Reset"}, {2, "Set"}};
constexpr ListItem label_items[] = {{0, "Don't change"}, {1, "None"},   {2, "Gray"},
                                    {3, "Green"},        {4, "Purple"}, {5, "Blue"},
                                    {6, "Yellow"},       {7, "Red"},    {8, "Orange"}};
constexpr ListItem thumbnail_type_items[] = {{0, "JPEG"}, {1, "PNG"}};
constexpr ListItem image_metadata_items[] = {{0, "Set IPTC"},
                                             {1, "Set Exif"},
                                             {2, "Set XMP"},
                                             {3, "Set image URL"},
                                             {4, "Set JPEG comment"}};
constexpr ListItem movie_metadata_items[] = {{0, "Set with XML"},
                                             {1, "Set title"},
                                             {2, "Set description"},
                                             {3, "Set creation date"},
                                             {4, "Set GPS"}};
constexpr ListItem cursor_items[] = {{0, "Link Cursor"}, {1, "Copy Cursor"}};

constexpr StepParameter result = target("Result");
constexpr StepParameter result_error = target("Result (error)");
constexpr StepParameter file_path = calculation("FilePath");
constexpr StepParameter source_file_path = calculation("Source filePath");
constexpr StepParameter destination_file_path = calculation("Destination filePath");
constexpr StepParameter optional_destination = calculation("Destination filePath (optional)");
constexpr StepParameter folder_path = calculation("FolderPath");
constexpr StepParameter prompt = calculation("Prompt");
constexpr StepParameter initial_folder = calculation("Initial folder");
constexpr StepParameter time_stamp = calculation("Timestamp", DataType::TimeStamp);
constexpr StepParameter encoding = list("Encoding", encoding_items, native_encoding);
constexpr StepParameter line_endings = list("Line endings", line_ending_items);
constexpr StepParameter other_volumes = boolean("Allow different volumes");
constexpr StepParameter timeout = calculation("Timeout (secs; optional)", DataType::Number);

constexpr StepParameter append_to_file[] = {result_error, file_path, calculation("Text to append"),
                                            encoding, line_endings};
constexpr StepParameter contents_dialog[] = {result, prompt, initial_folder, encoding,
                                             boolean("Convert to FileMaker line endings")};
constexpr StepParameter control_step[] = {result_error, list("Action", control_items),
                                          calculation("Password")};
constexpr StepParameter copy_file[] = {result_error, source_file_path, destination_file_path};
constexpr StepParameter copy_folder[] = {result_error, calculation("Source folderPath"),
                                         calculation("Destination folderPath")};
constexpr StepParameter create_alias[] = {result_error, calculation("Source path"),
                                          calculation("Destination aliasPath")};
constexpr StepParameter create_file[] = {result_error, file_path,
                                         list("Create folders", create_folder_items)};
constexpr StepParameter one_folder[] = {result_error, folder_path};
constexpr StepParameter create_thumbnail[] = {target("Thumbnail", DataType::Container),
                                              file_path,
                                              calculation("Thumbnail name"),
                                              calculation("Thumbnail size", DataType::Number),
                                              boolean("Make square"),
                                              list("Thumbnail Type", thumbnail_type_items)};
constexpr StepParameter create_zip[] = {result_error, calculation("Source path"),
                                        calculation("Destination Zip file"), timeout};
constexpr StepParameter one_file[] = {result_error, file_path};
constexpr StepParameter delete_folder[] = {result_error, folder_path,
                                           boolean("Delete all subfolders")};
constexpr StepParameter add_drop_handler[] = {result_error,
                                              calculation("File name"),
                                              calculation("Script name"),
                                              calculation("Field bounds"),
                                              list("Cursor type", cursor_items),
                                              boolean("Allow Mail Drops"),
                                              boolean("Scroll the drop zone")};
constexpr StepParameter execute_shell[] = {
    result,
    calculation("Shell command"),
    timeout,
    boolean("Wait on result", true),
    list("Encoding", encoding_items, utf8_encoding),
    calculation("Wait time after exit (seconds)", DataType::Number),
    boolean("Show command window (Windows)")};
constexpr StepParameter insert_in_file[] = {result_error,
                                            source_file_path,
                                            optional_destination,
                                            calculation("Text to insert"),
                                            calculation("Position", DataType::Number),
                                            encoding,
                                            line_endings};
constexpr StepParameter launch_application[] = {result_error, file_path,
                                                calculation("Parameters (optional)")};
constexpr StepParameter mount_disk[] = {result_error,
                                        calculation("Zone"),
                                        calculation("Server"),
                                        calculation("Disk"),
                                        calculation("User name"),
                                        calculation("Password"),
                                        boolean("Reuse drive letter (Windows)")};
constexpr StepParameter move_file[] = {result_error, source_file_path, destination_file_path,
                                       other_volumes};
constexpr StepParameter save_file_dialog[] = {result, prompt, calculation("Default name"),
                                              initial_folder};
constexpr StepParameter select_file_dialog[] = {result,
                                                prompt,
                                                initial_folder,
                                                boolean("Allow multiple selection"),
                                                boolean("Show invisibles"),
                                                boolean("Allow package selection"),
                                                boolean("Allow navigate into packages")};
constexpr StepParameter select_folder_dialog[] = {result, prompt, initial_folder};
constexpr StepParameter set_attributes[] = {result_error,
                                            file_path,
                                            list("Lock", lock_items),
                                            list("Visibility", visibility_items),
                                            list("Archive bit", archive_items),
                                            list("Finder label", label_items)};
constexpr StepParameter set_finder_comment[] = {result_error, file_path,
                                                calculation("Comment text")};
constexpr StepParameter set_contents[] = {result_error, file_path, calculation("Text to set"),
                                          encoding, line_endings};
constexpr StepParameter set_image_metadata[] = {result_error,
                                                source_file_path,
                                                optional_destination,
                                                list("Action", image_metadata_items),
                                                calculation("Metadata block"),
                                                encoding};
constexpr StepParameter set_time_stamp[] = {result_error, file_path, time_stamp};
constexpr StepParameter substitute_in_file[] = {result_error,
                                                source_file_path,
                                                optional_destination,
                                                calculation("Search string"),
                                                calculation("Replace string"),
                                                boolean("Ignore case"),
                                                list("Encoding", encoding_items, utf8_encoding)};
constexpr StepParameter unmount_disk[] = {result_error, calculation("Disk name")};
constexpr StepParameter unzip[] = {result_error,
                                   calculation("Zip filePath"),
                                   calculation("Destination folderPath"),
                                   boolean("Don't create archive folder"),
                                   boolean("Overwrite Existing items"),
                                   timeout};
constexpr StepParameter exchange_files[] = {result_error, calculation("FilePath 1"),
                                            calculation("FilePath 2"), other_volumes};
constexpr StepParameter set_movie_metadata[] = {
    result_error, source_file_path, optional_destination, list("Action", movie_metadata_items),
    calculation("Metadata")};
constexpr StepParameter bring_to_front[] = {result_error};

// ID, name, description, how many parameters the body needs, parameters, body
constexpr StepRow all_steps[] = {
    {7308, "Append to File", "Appends text to the contents of a file.", 3, append_to_file,
     files::append_to_file},
    {7202, "Get File Contents with Dialog",
     "Lets the user select a file and returns the contents of the selected file.", 1,
     contents_dialog, files::contents_dialog},
    {7203, "Enable/Disable Vell File Plug-in",
     "Disables or enables all functions of the plug-in, or tells whether they are enabled.", 0,
     control_step, control, Served::Always},
    {7210, "Copy File", "Copies a file to the specified path.", 3, copy_file, files::copy_file},
    {7296, "Copy Folder", "Copies a folder to the specified path.", 3, copy_folder,
     files::copy_folder},
    {7306, "Create Alias", "Creates an alias (shortcut) of a file or folder.", 3, create_alias,
     files::create_alias},
    {7211, "Create File", "Creates a new empty file.", 2, create_file, files::create_file},
    {7212, "Create Folder", "Creates a new empty folder.", 2, one_folder, files::create_folder},
    {7284, "Create Thumbnail", "Creates a thumbnail (a small image) from an image file.", 2,
     create_thumbnail, pictures::create_thumbnail},
    {7303, "Create Zip", "Creates a zip file from a file or folder.", 3, create_zip,
     archive::create_zip},
    {7213, "Delete file", "Deletes a file.", 2, one_file, files::delete_file},
    {7214, "Delete Folder", "Deletes a folder.", 2, delete_folder, files::delete_folder},
    {7298, "Add DragAndDrop Handler",
     "Add a drag and drop handler for dropping files and folders onto a FileMaker window.", 3,
     add_drop_handler, drag_and_drop},
    {7309,
     "Stop DragAndDrop Handlers",
     "Stops the drag and drop handlers.",
     0,
     {},
     stop_drop_handlers},
    {7295, "Execute Shell",
     "Executes a command in the shell of the operating system and returns its output.", 2,
     execute_shell, files::execute_shell},
    {7302, "Insert in File", "Inserts text into a file at the specified position.", 4,
     insert_in_file, files::insert_contents},
    {7314, "Launch File", "Opens a file with the application that is registered for it.", 2,
     one_file, files::launch},
    {7252, "Launch Application", "Starts an application, with parameters where they are given.", 2,
     launch_application, files::launch},
    {7312, "Open Folder", "Opens a folder in the file manager.", 2, one_folder, files::open_folder},
    {7261, "Mount Disk", "Connects to a shared network volume.", 4, mount_disk, files::mount_disk},
    {7262, "Move File", "Moves (or renames) a file.", 3, move_file, files::move_file},
    {7297, "Move Folder", "Moves (or renames) a folder.", 3, copy_folder, files::move_folder},
    {7299, "Reveal File", "Shows a file in its folder in the file manager.", 2, one_file,
     files::reveal},
    {7310, "Reveal Folder", "Shows a folder in the file manager.", 2, one_folder, files::reveal},
    {7264, "Show Save File Dialog", "Asks the user where to save a file.", 2, save_file_dialog,
     files::save_file_dialog},
    {7271, "Show Select File Dialog", "Asks the user to select one file or several.", 2,
     select_file_dialog, files::select_file_dialog},
    {7272, "Show Select Folder Dialog", "Asks the user to select a folder.", 2,
     select_folder_dialog, files::select_folder_dialog},
    {7313, "Set Contents of File", "Replaces the contents of a file by the specified text.", 3,
     set_contents, files::set_contents_of_file},
    {7282, "Set File Attributes", "Sets attributes of a file.", 2, set_attributes,
     files::set_file_attribute},
    {7311, "Set Finder Comment", "Sets the Finder comment of a file (Mac OS only).", 3,
     set_finder_comment, files::set_finder_comment},
    {7287, "Set MetaData of Image File", "Writes metadata into an image file.", 5,
     set_image_metadata, metadata::set_metadata},
    {7285, "Set Timestamp Created", "Sets the creation date and time of a file.", 3, set_time_stamp,
     files::set_time_stamp_created},
    {7286, "Set Timestamp Modified", "Sets the modification date and time of a file.", 3,
     set_time_stamp, files::set_time_stamp_modified},
    {7283, "Substitute in File", "Replaces every occurrence of a text in a file by another text.",
     5, substitute_in_file, files::substitute},
    {7290, "Unmount Disk", "Unmounts and ejects a remote or removable disk.", 2, unmount_disk,
     files::unmount_disk},
    {7304, "UnZip", "Expands a zip file into a folder.", 2, unzip, archive::unzip},
    {7317, "Exchange Files", "Exchanges the contents of two files on the same disk.", 3,
     exchange_files, files::exchange_files},
    {7320, "Set MetaData of Movie", "Writes metadata into a movie file.", 0, set_movie_metadata,
     metadata::set_movie_metadata},
    {7325, "Bring To Front", "Brings FileMaker to the front.", 0, bring_to_front,
     files::bring_to_front},
};

} // namespace

std::span<const StepRow> step_rows() {
    return all_steps;
}

const StepRow* find_step(std::int16_t id) {
    const auto row = std::ranges::find(all_steps, id, &StepRow::id);
    return row == std::end(all_steps) ? nullptr : row;
}

std::string_view step_name(std::int16_t id) {
    const StepRow* row = find_step(id);
    return row ? row->name : "VlFile_STEP_NAME_NOT_SET";
}

} // namespace vell::plugin
