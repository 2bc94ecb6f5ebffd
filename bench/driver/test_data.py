"""Files and directories that the commands are measured with."""

SENTENCE = "Plain text without any character of markup, as most files are. \n"


def text(size):
    return (SENTENCE * (size // len(SENTENCE) + 1))[:size]


def text_file(shop, size):
    path = shop.new_directory("text") / "plain.txt"
    path.write_text(text(size))
    return path


def write_request(shop, size, target):
    """A file that holds a "write" request with `size` bytes of data for the target."""
    path = shop.new_directory("request") / "write"
    path.write_text(f"write\n{target}\n{text(size)}")
    return path


def directory_of(shop, entries):
    """A directory of empty files and one subdirectory, names in no order."""
    directory = shop.new_directory("list")
    (directory / "Sub").mkdir()
    for number in range(entries - 1):
        scattered = number * 7919 % 1_000_003
        (directory / f"{'Ff'[number % 2]}ile-{scattered:07d}.txt").touch()
    return directory


def tree_of(shop, files):
    """A tree of small files, a hundred in each directory."""
    tree = shop.new_directory("tree")
    for number in range(files):
        directory = tree / f"part-{number // 100:03d}"
        directory.mkdir(exist_ok=True)
        (directory / f"file-{number:05d}.txt").write_text(text(400))
    return tree
