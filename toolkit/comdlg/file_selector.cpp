// The file selector: choosing a file to open or a name to save under.
