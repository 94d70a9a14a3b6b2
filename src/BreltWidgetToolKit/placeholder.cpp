// Replaced by the kit's first class.
