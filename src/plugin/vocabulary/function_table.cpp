// One row a function, in the order of registration.
#include "src/archive/zip_functions.h"
#include "src/documents/plain_text.h"
#include "src/files/commands/shell.h"
#include "src/files/contents/character_codes.h"
#include "src/files/contents/contents.h"
#include "src/files/contents/contents_dialog.h"
#include "src/files/contents/edit_contents.h"
#include "src/files/contents/export_to_file.h"
#include "src/files/contents/text_conversion.h"
#include "src/files/contents/write_contents.h"
#include "src/files/desktop/aliases.h"
#include "src/files/desktop/launching.h"
#include "src/files/desktop/select_dialogs.h"
#include "src/files/disks/disks.h"
#include "src/files/information/attributes.h"
#include "src/files/information/code_signature.h"
#include "src/files/information/digest.h"
#include "src/files/information/file_times.h"
#include "src/files/information/information.h"
#include "src/files/information/mac_properties.h"
#include "src/files/information/shell_information.h"
#include "src/files/listing/listing.h"
#include "src/files/listing/search.h"
#include "src/files/paths/defaults.h"
#include "src/files/paths/path_references.h"
#include "src/files/paths/path_to.h"
#include "src/files/paths/special_folders.h"
#include "src/files/tree/folder_operations.h"
#include "src/files/tree/tree.h"
#include "src/metadata/get_metadata.h"
#include "src/metadata/set_metadata.h"
#include "src/pictures/create_thumbnail.h"
#include "src/pictures/get_icon.h"
#include "src/plugin/vocabulary/own_functions.h"
#include "src/plugin/vocabulary/registry.h"
#include "src/structure/file_structure.h"

#include <algorithm>
#include <array>

namespace vell::plugin {
namespace {

// In which of the host's calculation dialogs a function is offered.
constexpr std::uint32_t all_dialogs = 0xFF00;
constexpr std::uint32_t interactive = 0xE900; // not for auto-enter, validation and privileges

// The host demands one number of parameters at least, the body needs another.
constexpr LeastParameters least(std::int16_t by_host, std::int16_t by_body) {
    return {by_host, by_body};
}

// ID, least and most parameters, dialogs, prototype, description, body
constexpr FunctionRow all_functions[] = {
    {9000, 0, 0, all_dialogs, "VlFile_Version",
     "Use this function to see which version of the plug-in is loaded.", version, Served::Always},
    {9001, least(1, 0), 1, all_dialogs, "VlFile_Version( switches )",
     "Returns which version of the plug-in is loaded.", version, Served::Always},
    {9002, 0, 0, all_dialogs, "VlFile_VersionAutoUpdate",
     "Returns the 8-digit version number \"" VELL_AUTO_UPDATE_VERSION
     "\" for the host server's automatic update.",
     version_auto_update, Served::Always},
    {4201, 2, 2, all_dialogs, "VlFile_AppendContents( switches ; text )",
     "Append characters to the contents of an existing file indicated by the SetDefaultFileSpec "
     "function.",
     files::append_contents},
    {4202, 1, 3, interactive, "VlFile_ContentsDialog( switches ; { prompt ; { initialFolder } } )",
     "Shows the user a file selection dialog, the contents of the selected file is returned.",
     files::contents_dialog},
    {4203, least(1, 0), 2, all_dialogs, "VlFile_Control( switches ; password )",
     "Controls the functions of the plug-in.", control, Served::Always},
    {4204, 2, 2, all_dialogs, "VlFile_ConvertFromFMText( switches ; text )",
     "Converts text formatted in the internal FileMaker format to text formatted in the format of "
     "the current operating system running on this computer.",
     files::convert_from_host_text},
    {4205, 2, 2, all_dialogs, "VlFile_ConvertToFMText( switches ; text )",
     "Converts text formatted in the format of the current operating system running on this "
     "computer to text formatted in the internal FileMaker format.",
     files::convert_to_host_text},
    {4210, 3, 3, all_dialogs, "VlFile_CopyFile( switches ; sourceFilePath ; destinationFilePath )",
     "Copies a file to the specified path.", files::copy_file},
    {4211, 2, 2, all_dialogs, "VlFile_CreateFile( switches ; filePath )",
     "Creates a new empty file in the location indicated by the filePath.", files::create_file},
    {4212, 2, 2, all_dialogs, "VlFile_CreateFolder( switches ; filePath )",
     "Creates a new (empty) folder (subdirectory).", files::create_folder},
    {4284, 2, 3, all_dialogs, "VlFile_CreateThumbnail( switches ; filePath ; { thumbnailName } )",
     "Creates a thumbnail (a small image of normally 80x80 pixels) from a graphics file and "
     "returns it.",
     pictures::create_thumbnail},
    {4213, 2, 2, all_dialogs, "VlFile_DeleteFile( switches ; filePath )",
     "Deletes the file indicated by the filePath.", files::delete_file},
    {4214, 2, 2, all_dialogs, "VlFile_DeleteFolder( switches ; folderPath )",
     "Deletes the folder indicated by the folderPath.", files::delete_folder},
    {4215, 2, 2, all_dialogs, "VlFile_DiskInfo( switches ; diskname )",
     "Retrieves information about a specified disk, like the number of files.", files::disk_info},
    {4216, least(2, 0), 2, all_dialogs, "VlFile_Exists( switches ; filePath )",
     "Check for the existence of a file or folder.", files::exists},
    {4220, 2, 2, all_dialogs, "VlFile_FileSpecToFullPath( switches ; FileSpec )",
     "Returns full path of a file or folder from the FSSpec.", files::file_spec_to_full_path},
    {4221, 1, 1, all_dialogs, "VlFile_FindFolder( folderswitch )",
     "Returns the path to special folders (subdirectories).", files::find_folder},
    {4222, 2, 2, all_dialogs, "VlFile_FullPathToFileSpec( switches ; filePath )",
     "Changes the full name path to the standard Macintosh FSSpec.", files::full_path_to_file_spec},
    {4223, 2, 4, all_dialogs, "VlFile_GetContents( switches ; filePath { ; start ; { size } } )",
     "Returns (a part of) the contents of the file specified by the filePath.",
     documents::get_contents},
    {4224, 2, 2, all_dialogs, "VlFile_GetDataSize( switches ; filePath )",
     "Returns the size of the data for the file specified by the filePath.", files::get_file_size,
     Served::WhenEnabled, RegistrationGroup::First, "GetDataSize"},
    {4230, 2, 2, all_dialogs, "VlFile_GetDateCreated( switches ; filePath )",
     "Returns the creation date for the file specified by the filePath.", files::get_date_created},
    {4231, 2, 2, all_dialogs, "VlFile_GetDateModified( switches ; filePath )",
     "Returns the modification date for the file specified by the filePath.",
     files::get_date_modified},
    {4232, 2, 2, all_dialogs, "VlFile_GetTimestampCreated( switches ; filePath )",
     "Returns the creation date and time for the file specified by the filePath.",
     files::get_time_stamp_created},
    {4233, 2, 2, all_dialogs, "VlFile_GetTimestampModified( switches ; filePath )",
     "Returns the modification date and time for the file specified by the filePath.",
     files::get_time_stamp_modified},
    {4234, 2, 2, all_dialogs, "VlFile_GetFileAttribute( switches ; filePath )",
     "Returns an attribute of the file specified by the filePath.", files::get_file_attribute},
    {4240, 2, 2, all_dialogs, "VlFile_GetFileCreator( switches ; filePath )",
     "Returns the Creator for the file specified by the filePath.", files::get_file_creator},
    {4241, 2, 2, all_dialogs, "VlFile_GetFileSize( switches ; filePath )",
     "Returns the file size for the file specified by the filePath.", files::get_file_size},
    {4242, 2, 2, all_dialogs, "VlFile_GetFileType( switches ; filePath )",
     "Returns the FileType for the file specified by the filePath.", files::get_file_type},
    {4243, 1, 3, all_dialogs, "VlFile_GetPathTo( switches ; desiredFilename ; fileSize )",
     "Returns the path to an object, at the moment the path to the FileMaker application or the "
     "current FileMaker file.",
     files::get_path_to},
    {4244, 2, 2, all_dialogs, "VlFile_GetResForkSize( switches ; filePath )",
     "Returns the size of the resource fork for the file specified by the filePath.",
     files::get_resource_fork_size},
    {4250, 2, 2, all_dialogs, "VlFile_GetTimeCreated( switches ; filePath )",
     "Returns the creation time for the file specified by the filePath.", files::get_time_created},
    {4251, 2, 2, all_dialogs, "VlFile_GetTimeModified( switches ; filePath )",
     "Returns the modification time for the file specified by the filePath.",
     files::get_time_modified},
    {4252, 2, 3, all_dialogs, "VlFile_Launch( switches ; filePath ; { params } )",
     "Opens a file with the application that has registered it.", files::launch},
    {4253, 1, 1, all_dialogs, "VlFile_ListDisks( switches )",
     "Lists the names of all currently available disks.", files::list_disks},
    {4254, 2, 2, all_dialogs, "VlFile_ListFolder( switches ; folderPath )",
     "Lists what is inside a folder (directory).", files::list_folder},
    {4260, 2, 2, all_dialogs, "VlFile_GetMetaData( switches ; filePath )",
     "Gets metadata out of a graphic file.", metadata::get_metadata},
    {4261, 4, 6, all_dialogs,
     "VlFile_MountDisk( switches ; zone ; server ; disk; { username ; password } )",
     "Connect to a shared network volume, by mounting the disk.", files::mount_disk},
    {4262, 3, 3, all_dialogs, "VlFile_MoveFile( switches ; sourceFilePath ; destinationFilePath )",
     "Moves (or renames) a file from one disk location to another.", files::move_file},
    {4263, 2, 3, all_dialogs, "VlFile_ReferenceToClip( switches ; filePath ; { pathToFMFile } )",
     "OBSOLETE VlFile_ReferenceToClip", files::reference_to_clip},
    {4264, 2, 4, interactive,
     "VlFile_SaveFileDialog( switches ; prompt ; { defaultName ; { initialFolder } } )",
     "Presents the user with a dialog, in which the user can specify where to save a file.",
     files::save_file_dialog},
    {4270, 3, 3, all_dialogs,
     "VlFile_Search( switches /* Use \"-files\" and/or \"-folders\" */ ; folderPath ; searchName )",
     "Search a folder (or volume) for a file or folder (directory).", files::search},
    {4271, 2, 3, interactive, "VlFile_SelectFileDialog( switches ; prompt ; { initialFolder } )",
     "Presents the user with a standard dialog and displays all files in a directory.",
     files::select_file_dialog},
    {4272, 2, 3, interactive, "VlFile_SelectFolderDialog( switches ; prompt ; { initialFolder } )",
     "With this function the user can select a folder on disk.", files::select_folder_dialog},
    {4273, 2, 2, all_dialogs, "VlFile_SetContents( switches ; text )",
     "Sets the contents of an existing file indicated by the SetDefaultFileSpec function.",
     files::set_contents},
    {4274, 2, 2, all_dialogs, "VlFile_SetDefaultCreator( switches ; Creator )",
     "Specifies the file creator to be used when creating a new file.", files::set_default_creator},
    {4280, 2, 2, all_dialogs, "VlFile_SetDefaultFileSpec( switches ; filePath )",
     "Indicates a FilePath (i.e. the file) to be used in succeeding functions where no FilePath is "
     "indicated.",
     files::set_default_file},
    {4281, 2, 2, all_dialogs, "VlFile_SetDefaultType( switches ; fileType )",
     "Sets the fileTypes to be displayed when showin gSelectFileDialog.", files::set_default_type},
    {4282, 2, 4, all_dialogs, "VlFile_SetFileAttribute( switches ; filePath ; cftype ; comment )",
     "Sets an attribute of the file specified by the filePath.", files::set_file_attribute},
    {4285, 3, 3, all_dialogs, "VlFile_SetTimestampCreated( switches ; filePath ; timestamp )",
     "Sets the creation date/time of the file specified by the filePath.",
     files::set_time_stamp_created},
    {4286, 3, 3, all_dialogs, "VlFile_SetTimestampModified( switches ; filePath ; timestamp )",
     "Sets the modification date/time of the file specified by the filePath.",
     files::set_time_stamp_modified},
    {4283, 5, 5, all_dialogs,
     "VlFile_Substitute( switches ; sourceFile ; destinationFile ; search string ; replace string "
     ")",
     "Substitutes every occurrence of a specified set of characters in a (text) file with another "
     "set of characters you specify, and writes the revised file. The Substitute function is case "
     "sensitive.",
     files::substitute},
    {4290, 2, 2, all_dialogs, "VlFile_UnmountDisk( switches ; diskname )",
     "Unmounts and ejects a remote or removable disk.", files::unmount_disk},
    {4287, 4, 4, all_dialogs,
     "VlFile_SetMetaData( switches ; sourceFilePath ; destFilePath ; metadata )",
     "Sets metadata into an image file.", metadata::set_metadata},
    {4291, 2, 2, all_dialogs, "VlFile_GetDateLastAccessed( switches ; filePath )",
     "Returns the date a file was accessed (opened) for the last time.", files::get_date_accessed},
    {4292, 2, 2, all_dialogs, "VlFile_GetTimeLastAccessed( switches ; filePath )",
     "Returns the time a file was accessed (opened) for the last time.", files::get_time_accessed},
    {4293, 2, 2, all_dialogs, "VlFile_GetTimeStampLastAccessed( switches ; filePath )",
     "Returns the date and time a file was accessed (opened) for the last time.",
     files::get_time_stamp_accessed},
    {4294, 2, 3, all_dialogs, "VlFile_AsciiValueToText( switches ; AsciiValues ; { separator } )",
     "Converts (one or more) numbers to their equivalent ASCII characters.",
     files::ascii_value_to_text},
    {4295, 2, 2, all_dialogs, "VlFile_ExecuteShell( switches ; shellCommand )",
     "Execute a command in the (UNIX or Windows) shell of the operating system.",
     files::execute_shell},
    {4296, 3, 3, all_dialogs,
     "VlFile_CopyFolder( switches ; sourceFolderPath ; destinationFolderPath )",
     "Copies a folder to the specified folder path.", files::copy_folder},
    {4297, 3, 3, all_dialogs,
     "VlFile_MoveFolder( switches ; sourceFolderPath ; destinationFolderPath )",
     "Moves a folder to the specified folder path.", files::move_folder},
    {4298, 3, 4, interactive,
     "VlFile_DragAndDrop( switches ; fileName ; scriptName ; { fieldBounds } )",
     "This function implements drag and drop of files and folders onto a FileMaker window.",
     drag_and_drop},
    {4299, 2, 2, all_dialogs, "VlFile_Reveal( switches ; filePath )",
     "Reveals a file (or folder) in the Finder or Explorer.", files::reveal},
    {4300, 2, 2, all_dialogs, "VlFile_GetTypeOfItem( switches ; filePath )",
     "Returns the type of an item, for example if it is a folder or a file.",
     files::get_type_of_item},
    {4301, 2, 2, all_dialogs, "VlFile_GetFileHash( switches ; filePath )",
     "Returns the MD5 or SHA1 hash value (checksum) of a file.", files::get_file_hash},
    {4302, 4, 5, all_dialogs,
     "VlFile_InsertContents( switches ; sourceFilePath ; destFilePath ; text ; { startPos } )",
     "Inserts text into a file, at the specified position.", files::insert_contents},
    {4308, 3, 3, all_dialogs, "VlFile_AppendToFile( switches ; filePath ; text )",
     "Append characters to the contents of a file.", files::append_to_file},
    {4311, 3, 3, all_dialogs, "VlFile_SetFinderComment( switches ; filePath ; commentText )",
     "Sets the Finder comment of a file (Mac OS only).", files::set_finder_comment},
    {4313, 3, 3, all_dialogs, "VlFile_SetContentsOfFile( switches ; filePath ; text )",
     "Sets the content of a file with the specified text.", files::set_contents_of_file},
    {4315, 2, 2, all_dialogs, "VlFile_GetFolderSize( switches ; folderPath )",
     "Gets the size of the folder (the total size of all the files in the folder).",
     files::get_folder_size},
    {4316, 2, 2, all_dialogs, "VlFile_ResolveAlias( switches ; aliasPath )",
     "Resolves the alias file (or shortcut), returns the path to the destination of the alias.",
     files::resolve_alias},
    {4317, 3, 3, all_dialogs, "VlFile_ExchangeFiles( switches ; filePath1 ; filePath2 )",
     "Exchanges two files on the same disk.", files::exchange_files},
    {4318, 2, 2, all_dialogs, "VlFile_GetCodeSignInfo( switches ; filePath )",
     "Gets code sign information of a (application) file or check if the signing is valid.",
     files::get_code_sign_info},
    {4319, 2, 2, all_dialogs, "VlFile_GetFileStructure( switches ; filePath )",
     "Returns the structure of a (movie) file.", structure::get_file_structure},
    {4320, least(4, 0), 4, all_dialogs,
     "VlFile_SetMovieMetaData( switches ; sourceFilePath ; destFilePath ; metadata )",
     "Sets metadata into a movie file.", metadata::set_movie_metadata},
    {4321, 3, 3, all_dialogs, "VlFile_ExportToFile( switches ; source ; filepath )",
     "Exports the (binary) contents of a container field or variable to a new file.",
     files::export_to_file},
    {4322, 2, 2, all_dialogs, "VlFile_IsFree( switches ; filepath )",
     "Returns true if this file is not in exclusive use by another application and not is locked.",
     files::is_free},
    {4323, 2, 2, all_dialogs, "VlFile_GetExtension( switches ; filepath )",
     "Returns the extension of a file in a filepath.", files::get_extension},
    {4325, 0, 0, all_dialogs, "VlFile_BringToFront", "Brings the FileMaker app to the front.",
     files::bring_to_front},
    {4326, 2, 2, all_dialogs, "VlFile_GetFileKind( switches ; filePath )",
     "Returns the file type description (kind) of a file.", files::get_file_kind},
    {4327, 2, 2, all_dialogs, "VlFile_GetAsPlainText( switches ; filePath )",
     "Returns the contents of a PDF file converted to plain text.", documents::get_as_plain_text},
    {4328, 1, 1, all_dialogs, "VlFile_GetPreferredLanguages( switches )",
     "Returns a list of preferred language-country codes, like \"en-GB\".",
     files::get_preferred_languages},
    {4329, least(1, 2), 2, all_dialogs, "VlFile_GetFileName( switches ; filepath )",
     "Returns the name of a file (or folder) in a filePath, including the extension.",
     files::get_file_name},
    // A second group: a failure in the first does not keep these from being tried.
    {4306, 3, 3, all_dialogs, "VlFile_CreateAlias( switches ; sourceFilePath ; destAliasFilePath )",
     "Create an alias file (or shortcut) from the source file or source folder.",
     files::create_alias, Served::WhenEnabled, RegistrationGroup::Second},
    {4307, 2, 3, all_dialogs, "VlFile_GetIcon( switches ; filePath ; { iconName })",
     "Gets the icon of a file and returns it as a PNG image.", pictures::get_icon,
     Served::WhenEnabled, RegistrationGroup::Second},
    {4303, 3, 3, all_dialogs, "VlFile_CreateZip( switches ; sourceFilePath ; destZipFilePath )",
     "create a ZIP file, from the specified file or folder.", archive::create_zip,
     Served::WhenEnabled, RegistrationGroup::Second},
    {4304, 2, 3, all_dialogs,
     "VlFile_UnZip( switches ; sourceZipFilePath ; destinationFolderPath )",
     "Expands a ZIP file into the specified folder.", archive::unzip, Served::WhenEnabled,
     RegistrationGroup::Second},
    {4305, 2, 2, all_dialogs, "VlFile_GetZipInfo( switches ; zipFilePath )",
     "Get information from a ZIP file.", archive::get_zip_info, Served::WhenEnabled,
     RegistrationGroup::Second},
};

constexpr std::size_t not_found = std::size(all_functions);

// Positions in it by ID less the lowest one; a call is dispatched in constant time.
constexpr std::int16_t lowest_id = 4200;
constexpr std::int16_t highest_id = 4329;
constexpr auto positions = [] {
    std::array<std::uint8_t, highest_id - lowest_id + 1> result{};
    result.fill(not_found);
    for (std::size_t i = 0; i < std::size(all_functions); ++i)
        if (all_functions[i].id >= lowest_id && all_functions[i].id <= highest_id)
            result[static_cast<std::size_t>(all_functions[i].id - lowest_id)] =
                static_cast<std::uint8_t>(i);
    return result;
}();

} // namespace

std::span<const FunctionRow> function_rows() {
    return all_functions;
}

const FunctionRow* find_function(std::int16_t registered_id) {
    if (registered_id >= lowest_id && registered_id <= highest_id) {
        const std::size_t position = positions[static_cast<std::size_t>(registered_id - lowest_id)];
        return position == not_found ? nullptr : &all_functions[position];
    }
    const auto row = std::ranges::find(all_functions, registered_id, &FunctionRow::registered_id);
    return row == std::end(all_functions) ? nullptr : row;
}

std::string_view function_prototype(std::int16_t id) {
    const auto row = std::ranges::find(all_functions, id, &FunctionRow::id);
    return row == std::end(all_functions) ? "VlFile__FUNCTION_NAME_NOT_SET" : row->prototype;
}

} // namespace vell::plugin
