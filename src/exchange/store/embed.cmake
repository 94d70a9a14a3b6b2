# Turns the text file INPUT into a source OUTPUT that defines zvx::Catalogue::embeddedText().
file(READ "${INPUT}" text)
if(text MATCHES "\\)zvx\"")
    message(FATAL_ERROR "${INPUT} holds the mark that ends the embedded text")
endif()
file(WRITE "${OUTPUT}" "// Made from ${INPUT}.\n"
    "#include \"exchange/store/catalogue.h\"\n\n"
    "std::string_view zvx::Catalogue::embeddedText()\n{\n    return R\"zvx(${text})zvx\";\n}\n")
