// Names of IPTC datasets (IPTC-NAA Information Interchange Model 4.2, chapters 5 and 6).
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace vell::metadata {

enum class DatasetForm : std::uint8_t {
    Text,
    Date,   // eight digits
    Time,   // six digits and the distance from Greenwich
    Number, // one or two bytes, the most significant first
    Bytes,
};

struct DatasetRow {
    std::uint8_t record;
    std::uint8_t number;
    std::string_view name; // as the standard has it, without blanks, hyphens and strokes
    DatasetForm form = DatasetForm::Text;
    bool is_repeatable = false;
};

namespace table {

inline constexpr bool repeatable = true;

inline constexpr auto datasets = std::to_array<DatasetRow>({
    {1, 0, "ModelVersion", DatasetForm::Number},
    {1, 5, "Destination", DatasetForm::Text, repeatable},
    {1, 20, "FileFormat", DatasetForm::Number},
    {1, 22, "FileFormatVersion", DatasetForm::Number},
    {1, 30, "ServiceIdentifier"},
    {1, 40, "EnvelopeNumber"},
    {1, 50, "ProductID", DatasetForm::Text, repeatable},
    {1, 60, "EnvelopePriority"},
    {1, 70, "DateSent", DatasetForm::Date},
    {1, 80, "TimeSent", DatasetForm::Time},
    {1, 90, "CodedCharacterSet", DatasetForm::Bytes},
    {1, 100, "UNO"},
    {1, 120, "ARMIdentifier", DatasetForm::Number},
    {1, 122, "ARMVersion", DatasetForm::Number},
    {2, 0, "RecordVersion", DatasetForm::Number},
    {2, 3, "ObjectTypeReference"},
    {2, 4, "ObjectAttributeReference", DatasetForm::Text, repeatable},
    {2, 5, "ObjectName"},
    {2, 7, "EditStatus"},
    {2, 8, "EditorialUpdate"},
    {2, 10, "Urgency"},
    {2, 12, "SubjectReference", DatasetForm::Text, repeatable},
    {2, 15, "Category"},
    {2, 20, "SupplementalCategory", DatasetForm::Text, repeatable},
    {2, 22, "FixtureIdentifier"},
    {2, 25, "Keywords", DatasetForm::Text, repeatable},
    {2, 26, "ContentLocationCode", DatasetForm::Text, repeatable},
    {2, 27, "ContentLocationName", DatasetForm::Text, repeatable},
    {2, 30, "ReleaseDate", DatasetForm::Date},
    {2, 35, "ReleaseTime", DatasetForm::Time},
    {2, 37, "ExpirationDate", DatasetForm::Date},
    {2, 38, "ExpirationTime", DatasetForm::Time},
    {2, 40, "SpecialInstructions"},
    {2, 42, "ActionAdvised"},
    {2, 45, "ReferenceService", DatasetForm::Text, repeatable},
    {2, 47, "ReferenceDate", DatasetForm::Date, repeatable},
    {2, 50, "ReferenceNumber", DatasetForm::Text, repeatable},
    {2, 55, "DateCreated", DatasetForm::Date},
    {2, 60, "TimeCreated", DatasetForm::Time},
    {2, 62, "DigitalCreationDate", DatasetForm::Date},
    {2, 63, "DigitalCreationTime", DatasetForm::Time},
    {2, 65, "OriginatingProgram"},
    {2, 70, "ProgramVersion"},
    {2, 75, "ObjectCycle"},
    {2, 80, "Byline", DatasetForm::Text, repeatable},
    {2, 85, "BylineTitle", DatasetForm::Text, repeatable},
    {2, 90, "City"},
    {2, 92, "Sublocation"},
    {2, 95, "ProvinceState"},
    {2, 100, "CountryPrimaryLocationCode"},
    {2, 101, "CountryPrimaryLocationName"},
    {2, 103, "OriginalTransmissionReference"},
    {2, 105, "Headline"},
    {2, 110, "Credit"},
    {2, 115, "Source"},
    {2, 116, "CopyrightNotice"},
    {2, 118, "Contact", DatasetForm::Text, repeatable},
    {2, 120, "CaptionAbstract"},
    {2, 122, "WriterEditor", DatasetForm::Text, repeatable},
    {2, 125, "RasterizedCaption", DatasetForm::Bytes},
    {2, 130, "ImageType"},
    {2, 131, "ImageOrientation"},
    {2, 135, "LanguageIdentifier"},
    {2, 150, "AudioType"},
    {2, 151, "AudioSamplingRate"},
    {2, 152, "AudioSamplingResolution"},
    {2, 153, "AudioDuration"},
    {2, 154, "AudioOutcue"},
    {2, 200, "ObjectPreviewFileFormat", DatasetForm::Number},
    {2, 201, "ObjectPreviewFileFormatVersion", DatasetForm::Number},
    {2, 202, "ObjectPreviewData", DatasetForm::Bytes},
});

} // namespace table

// Null for a dataset that the standard does not name.
constexpr const DatasetRow* find_dataset_row(std::uint8_t record, std::uint8_t number) {
    const auto found = std::ranges::find_if(table::datasets, [&](const DatasetRow& row) {
        return row.record == record && row.number == number;
    });
    return found == table::datasets.end() ? nullptr : &*found;
}

} // namespace vell::metadata
