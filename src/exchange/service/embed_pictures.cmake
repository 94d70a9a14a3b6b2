# Turns the PNG files INPUT, a list with commas, into a source OUTPUT that defines
# zvx::bankPictureBytes().
string(REPLACE "," ";" pictures "${INPUT}")
string(CONCAT source
    "// Made from the drawings of the banks.\n#include \"exchange/service/bank_pictures.h\"\n\n"
    "std::string_view zvx::bankPictureBytes(std::string_view bank)\n{\n")
foreach(picture IN LISTS pictures)
    get_filename_component(bank "${picture}" NAME_WE)
    file(READ "${picture}" bytes HEX)
    string(LENGTH "${bytes}" length)
    math(EXPR length "${length} / 2")
    string(REGEX REPLACE "(..)" "\\\\x\\1" bytes "${bytes}")
    string(APPEND source
        "    if (bank == \"${bank}\")\n        return {\"${bytes}\", ${length}};\n")
endforeach()
string(APPEND source "    return {};\n}\n")
file(WRITE "${OUTPUT}" "${source}")
