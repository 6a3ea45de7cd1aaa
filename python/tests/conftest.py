import gc
import signal
import warnings

import pytest
import zebcore as zeb
from zebcore import _core, _picture, _primitives, _shading


# A shell starts what runs in the background with interrupts ignored; the tests, and the programs that
# they start, are about what interrupts do.
signal.signal(signal.SIGINT, signal.default_int_handler)


@pytest.fixture(autouse=True)
def nothing_is_left():
    """Every test begins with nothing open, and leaves nothing behind."""
    zeb.reset()
    with warnings.catch_warnings():
        warnings.simplefilter("error", zeb.Warning)
        yield
    gc.collect()
    assert not _core.state.blocks, "blocks are open"
    zeb.reset()
    for registry in (_shading._shaders, _primitives._procedurals, _picture._open):
        assert not registry, "the library or the package holds objects that are done with"
    assert _core.state.callbacks == 0 and not _core.state.users_code
    assert _core.state.kept is None and not _core.state.reports


@pytest.fixture
def ball():
    """Renders a ball before a camera, in a small picture."""
    def render(width=48, height=36, before=None, **attributes):
        with zeb.Picture(width, height) as picture:
            zeb.perspective(40)
            zeb.translate(0, 0, 3)
            zeb.shading_rate(4)
            with picture.world():
                if before:
                    before()
                zeb.light("distant")
                zeb.light("ambient", intensity=0.2)
                with zeb.attributes(**attributes):
                    zeb.sphere(1)
        return picture
    return render
